// DeleteComment: drops a "$Copyright$" comment at the start of a template.
#include <cstdio>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string_view>

#include "kx_template.h"

namespace kx::tmpl {
namespace {

constexpr std::string_view kCopyrightMark = "$Copyright$";

// The comments that may carry the mark: opener and closer; a "//" comment
// has no closer and ends at the first line without "//".
struct CommentSign {
    std::string_view begin;
    const char *end;
};
constexpr CommentSign kCommentSigns[] = {
    {"/*", "*/"},
    {"<!", ">"},
    {"//", nullptr},
};
constexpr std::string_view kLineComment = "//";

int CommentKind(const char *line) {
    if (std::strstr(line, kCopyrightMark.data()) == nullptr) return -1;
    line += std::strspn(line, " \t");
    for (std::size_t kind = 0; kind < std::size(kCommentSigns); ++kind) {
        const std::string_view begin = kCommentSigns[kind].begin;
        if (std::strncmp(line, begin.data(), begin.size()) == 0) return static_cast<int>(kind);
    }
    return -1;
}

// A buffer of one byte cannot take another line: that counts as the end.
int SkipComment(FILE *stream, char *line, int size, int kind) {
    if (size < 2) return -1;
    int count = 0;
    for (;;) {
        if (std::fgets(line, size, stream) == nullptr) return -1;
        ++count;
        const char *end = kCommentSigns[kind].end;
        if (end == nullptr) {
            if (std::strstr(line, kLineComment.data()) == nullptr) return count;
            continue;
        }
        if (std::strstr(line, end) != nullptr) {
            if (std::fgets(line, size, stream) == nullptr) return -1;
            return count + 1;
        }
    }
}

}  // namespace
}  // namespace kx::tmpl

extern "C" int DeleteComment(FILE *stream, char *line, int size) {
    if (stream == nullptr || line == nullptr || size < 1) return -2;
    const int kind = kx::tmpl::CommentKind(line);
    if (kind < 0) return 0;
    return kx::tmpl::SkipComment(stream, line, size, kind);
}
