// A file's bytes read whole into memory, for the readers of small files
// (definitions, profiles, page texts, MIB lists), and its lines taken as a
// line buffer would take them. The descriptor is read directly,
// without a stream and its buffer, into memory that is never cleared first:
// a small file costs an open, one read that fills the text, the read that
// finds its end and a close. Header-only: each companion is a shared library
// of its own.
#ifndef KX_PLATFORM_FILE_TEXT_H
#define KX_PLATFORM_FILE_TEXT_H

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace kx::platform {

class FileText {
public:
    FileText() = default;
    FileText(const FileText &) = delete;
    FileText &operator=(const FileText &) = delete;

    // False when the file cannot be opened or memory runs out. A read that
    // fails (a directory) ends the text there, as the file's end would.
    bool Read(const char *path) {
        const int fd = open(path, O_RDONLY | O_CLOEXEC);
        if (fd < 0) return false;
        size_ = 0;
        complete_ = false;
        bool whole = true;
        for (;;) {
            if (size_ == room_ && !(whole = Grow())) break;
            const ssize_t got = read(fd, bytes_ + size_, room_ - size_);
            if (got < 0 && errno == EINTR) continue;
            complete_ = got == 0;
            if (got <= 0) break;
            size_ += static_cast<std::size_t>(got);
        }
        close(fd);
        return whole;
    }
    std::string_view View() const { return {bytes_, size_}; }
    // True when the last Read reached the file's end without a failed read.
    bool Complete() const { return complete_; }

private:
    // A list file, a page's texts or a short definition fit in the object;
    // a longer file goes to the heap, its room doubled as it grows.
    static constexpr std::size_t kInlineRoom = 4096;

    struct Release {
        void operator()(char *bytes) const { std::free(bytes); }
    };

    bool Grow() {
        const std::size_t room = 2 * room_;
        auto *grown = static_cast<char *>(std::realloc(heap_.get(), room));
        if (grown == nullptr) return false;
        if (!heap_) std::memcpy(grown, inline_.data(), size_);
        static_cast<void>(heap_.release());
        heap_.reset(grown);
        bytes_ = grown;
        room_ = room;
        return true;
    }

    std::array<char, kInlineRoom> inline_;  // not cleared: only read bytes are used
    std::unique_ptr<char, Release> heap_;
    char *bytes_ = inline_.data();
    std::size_t size_ = 0;
    std::size_t room_ = kInlineRoom;
    bool complete_ = false;
};

// The next piece of text that a line buffer of limit + 1 bytes (fgets) would
// read: at most limit bytes, up to and with the first LF; rest loses it.
inline std::string_view NextLinePiece(std::string_view &rest, std::size_t limit) {
    const std::string_view window = rest.substr(0, limit);
    const auto *feed = static_cast<const char *>(std::memchr(window.data(), '\n', window.size()));
    const std::size_t size = feed != nullptr ? static_cast<std::size_t>(feed - window.data()) + 1 : window.size();
    rest.remove_prefix(size);
    return window.substr(0, size);
}

// A piece as a C text holds it: up to its first NUL.
inline std::string_view UpToNul(std::string_view piece) {
    const auto *nul = static_cast<const char *>(std::memchr(piece.data(), '\0', piece.size()));
    return nul != nullptr ? piece.substr(0, static_cast<std::size_t>(nul - piece.data())) : piece;
}

}  // namespace kx::platform

#endif
