#include "support/request_fixtures.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace kx::testing {

ScratchTree::ScratchTree() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kx-request-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    root_ = pattern;
}

ScratchTree::~ScratchTree() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

void ScratchTree::Write(const std::string &relative, std::string_view content) const {
    const std::filesystem::path path = root_ / relative;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

CurrentDirectory::CurrentDirectory(const std::filesystem::path &directory)
    : previous_(std::filesystem::current_path()) {
    std::filesystem::current_path(directory);
}

CurrentDirectory::~CurrentDirectory() { std::filesystem::current_path(previous_); }

PageCapture::PageCapture() : previous_(_Utilsfpout), stream_(open_memstream(&buffer_, &size_)) {
    _Utilsfpout = stream_;
}

PageCapture::~PageCapture() {
    _Utilsfpout = previous_;
    std::fclose(stream_);
    std::free(buffer_);
}

std::string PageCapture::Text() {
    std::fflush(stream_);
    return std::string(buffer_, size_);
}

StandardInputPipe::StandardInputPipe() : saved_(dup(0)) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("pipe failed");
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

void StandardInputPipe::WriteAndClose(std::string_view data) {
    while (!data.empty()) {
        const ssize_t written = write(writer_, data.data(), data.size());
        if (written <= 0) throw std::runtime_error("write failed");
        data.remove_prefix(static_cast<size_t>(written));
    }
    close(writer_);
    writer_ = -1;
}

void OwnedList::Clear() {
    for (int index = 0; index < count; ++index) {
        std::free(list[index].Name);
        std::free(list[index].Wert);
        std::free(list[index].Vorgabe);
    }
    std::free(list);
    list = nullptr;
    count = 0;
}

}  // namespace kx::testing
