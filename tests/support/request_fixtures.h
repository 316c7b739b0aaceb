// Fixtures for tests of the request set-up: a changed current directory and
// a pipe on standard input, each put back at the end.
#ifndef KX_TESTS_SUPPORT_REQUEST_FIXTURES_H
#define KX_TESTS_SUPPORT_REQUEST_FIXTURES_H

#include <filesystem>
#include <string_view>

namespace kx::test {

// Makes directory the current one; the old one comes back at the end.
class CurrentDirectory {
public:
    explicit CurrentDirectory(const std::filesystem::path &directory);
    ~CurrentDirectory();
    CurrentDirectory(const CurrentDirectory &) = delete;
    CurrentDirectory &operator=(const CurrentDirectory &) = delete;

private:
    std::filesystem::path previous_;
};

// A pipe on file descriptor 0; the old standard input comes back at the end.
class StandardInputPipe {
public:
    StandardInputPipe();
    ~StandardInputPipe();
    StandardInputPipe(const StandardInputPipe &) = delete;
    StandardInputPipe &operator=(const StandardInputPipe &) = delete;

    // Writes data (at most what the pipe holds) and keeps the writing end open.
    void Write(std::string_view data);
    // Writes data and closes the writing end.
    void WriteAndClose(std::string_view data);

private:
    int saved_;
    int writer_ = -1;
};

}  // namespace kx::test

#endif
