// A word searched for in a file outside its comments: whether a MIB file
// defines traps (TRAP-TYPE written as code, not mentioned in a comment).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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

// The next occurrence of a text at or after a position. The positions asked
// for only grow, so an occurrence found once stays the answer until it is
// passed: every text is searched once over the whole file.
class NextOf {
public:
    NextOf(std::string_view text, std::string_view what) : text_(text), what_(what) {}
    std::size_t From(std::size_t from) {
        if (!known_ || found_ < from) {
            const std::size_t at = text_.find(what_, from);
            found_ = at == std::string_view::npos ? text_.size() : at;
            known_ = true;
        }
        return found_;
    }

private:
    std::string_view text_, what_;
    std::size_t found_ = 0;
    bool known_ = false;
};

}  // namespace

// Offset of the first word outside comments, -1 when there is none. A
// comment ends at the next comment mark (behind it) or the line end, as in ASN.1.
long SearchOutsideComments(std::string_view text, std::string_view word, std::string_view mark) {
    NextOf words(text, word), marks(text, mark), feeds(text, "\n"), returns(text, "\r");
    std::size_t at = 0;
    for (std::size_t found = words.From(0); found < text.size(); found = words.From(at)) {
        const std::size_t comment = mark.empty() ? text.size() : marks.From(at);
        if (found < comment) return static_cast<long>(found);
        const std::size_t inside = comment + mark.size();
        const std::size_t line = std::min(feeds.From(inside), returns.From(inside));
        const std::size_t next = marks.From(inside);
        at = next < line ? next + mark.size() : line;
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
