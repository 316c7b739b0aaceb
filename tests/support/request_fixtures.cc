#include "support/request_fixtures.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace kx::test {

CurrentDirectory::CurrentDirectory(const std::filesystem::path &directory)
    : previous_(std::filesystem::current_path()) {
    std::filesystem::current_path(directory);
}

CurrentDirectory::~CurrentDirectory() { std::filesystem::current_path(previous_); }

StandardInputPipe::StandardInputPipe() : saved_(dup(0)) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    dup2(ends[0], 0);
    close(ends[0]);
    writer_ = ends[1];
    clearerr(stdin);
}

StandardInputPipe::~StandardInputPipe() {
    if (writer_ >= 0) close(writer_);
    dup2(saved_, 0);
    close(saved_);
    clearerr(stdin);
}

void StandardInputPipe::Write(std::string_view data) {
    while (!data.empty()) {
        const ssize_t written = write(writer_, data.data(), data.size());
        if (written <= 0) std::abort();
        data.remove_prefix(static_cast<size_t>(written));
    }
}

void StandardInputPipe::WriteAndClose(std::string_view data) {
    Write(data);
    close(writer_);
    writer_ = -1;
}

}  // namespace kx::test
