// A word searched for in a file outside its comments: whether a MIB file
// defines traps (TRAP-TYPE written as code, not mentioned in a comment).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string_view>
#include <vector>

#include "companion/libKXUtils.h"

namespace kx::utils {
namespace {

// The whole file; false when it cannot be read.
bool ReadWhole(const char *path, std::vector<char> &content) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat status {};
    bool ok = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    content.resize(ok ? static_cast<std::size_t>(status.st_size) : 0);
    std::size_t done = 0;
    while (ok && done < content.size()) {
        const ssize_t got = read(fd, content.data() + done, content.size() - done);
        if (got <= 0) break;  // the file shrank meanwhile: what was read counts
        done += static_cast<std::size_t>(got);
    }
    close(fd);
    content.resize(done);
    return ok;
}

std::size_t Find(std::string_view text, std::string_view what, std::size_t from) {
    const std::size_t at = text.find(what, from);
    return at == std::string_view::npos ? text.size() : at;
}

// The end of the comment that starts at from: the next comment mark (behind
// it) or the line end, as in ASN.1.
std::size_t CommentEnd(std::string_view text, std::string_view mark, std::size_t from) {
    const std::size_t line = std::min(Find(text, "\n", from), Find(text, "\r", from));
    const std::size_t next = Find(text, mark, from);
    return next < line ? next + mark.size() : line;
}

}  // namespace

// Offset of the first word outside comments, -1 when there is none. Each
// search resumes where it stopped, so the scan stays linear in the text.
long SearchOutsideComments(std::string_view text, std::string_view word, std::string_view mark) {
    std::size_t at = 0, found = Find(text, word, 0);
    while (found < text.size()) {
        const std::size_t comment = mark.empty() ? text.size() : Find(text, mark, at);
        if (found < comment) return static_cast<long>(found);
        at = CommentEnd(text, mark, comment + mark.size());
        if (found < at) found = Find(text, word, at);
    }
    return -1;
}

}  // namespace kx::utils

extern "C" {

int KXUtilsSearchInFile(const char *path, int length, const char *word, int flags, const char *comment,
                        int reserved1, int reserved2) {
    (void)flags, (void)reserved1, (void)reserved2;
    if (path == nullptr || word == nullptr || length <= 0) return -2;
    std::vector<char> content;
    if (!kx::utils::ReadWhole(path, content)) return -2;
    const std::string_view text(content.data(), content.size());
    const std::string_view wanted(word, strnlen(word, static_cast<std::size_t>(length)));
    const long at = kx::utils::SearchOutsideComments(text, wanted, comment != nullptr ? comment : "");
    return at < 0 || at > 0x7fffffff ? -1 : static_cast<int>(at);
}

}  // extern "C"
