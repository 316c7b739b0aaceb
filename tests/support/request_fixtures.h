// Fixtures for tests of the request set-up: a scratch directory tree to
// search in, a captured page stream, a pipe on standard input and an input
// list that frees itself.
#ifndef KX_TESTS_SUPPORT_REQUEST_FIXTURES_H
#define KX_TESTS_SUPPORT_REQUEST_FIXTURES_H

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "kx_input.h"

namespace kx::testing {

// A fresh temporary directory, removed with everything in it.
class ScratchTree {
public:
    ScratchTree();
    ~ScratchTree();
    ScratchTree(const ScratchTree &) = delete;
    ScratchTree &operator=(const ScratchTree &) = delete;

    const std::filesystem::path &Root() const { return root_; }
    // Writes content (any bytes) to relative, creating its directories.
    void Write(const std::string &relative, std::string_view content) const;

private:
    std::filesystem::path root_;
};

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

// Points _Utilsfpout at a memory stream; the old stream comes back at the end.
class PageCapture {
public:
    PageCapture();
    ~PageCapture();
    PageCapture(const PageCapture &) = delete;
    PageCapture &operator=(const PageCapture &) = delete;

    // Everything written so far.
    std::string Text();

private:
    FILE *previous_;
    FILE *stream_;
    char *buffer_ = nullptr;
    size_t size_ = 0;
};

// A pipe on file descriptor 0; the old standard input comes back at the end.
class StandardInputPipe {
public:
    StandardInputPipe();
    ~StandardInputPipe();
    StandardInputPipe(const StandardInputPipe &) = delete;
    StandardInputPipe &operator=(const StandardInputPipe &) = delete;

    // Writes data (at most what the pipe holds) and closes the writing end.
    void WriteAndClose(std::string_view data);

private:
    int saved_;
    int writer_;
};

// An input list with its count, whose entries and array are freed at the end.
struct OwnedList {
    EingabeElement *list = nullptr;
    int count = 0;

    OwnedList() = default;
    ~OwnedList() { Clear(); }
    OwnedList(const OwnedList &) = delete;
    OwnedList &operator=(const OwnedList &) = delete;
    void Clear();
};

}  // namespace kx::testing

#endif
