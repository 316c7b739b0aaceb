// DeleteComment: drops a "$Copyright$" comment at the start of a template.
#include <cstdio>
#include <cstring>

#include "kx_template.h"

namespace kx::tmpl {
namespace {

// Comment openers and their closers, row for row; "//" comments end at the
// first line without "//".
constexpr const char *BeginSigns[] = {"/*", "<!", "//"};
constexpr const char *EndSigns[] = {"*/", ">", nullptr};
constexpr int kSignCount = 3;
constexpr size_t kSignLength = 2;

int CommentKind(const char *line) {
    if (std::strstr(line, "$Copyright$") == nullptr) return -1;
    line += std::strspn(line, " \t");
    for (int kind = 0; kind < kSignCount; ++kind)
        if (std::strncmp(line, BeginSigns[kind], kSignLength) == 0) return kind;
    return -1;
}

// A buffer of one byte cannot take another line: that counts as the end.
int SkipComment(FILE *stream, char *line, int size, int kind) {
    if (size < 2) return -1;
    int count = 0;
    for (;;) {
        if (std::fgets(line, size, stream) == nullptr) return -1;
        ++count;
        if (EndSigns[kind] == nullptr) {
            if (std::strstr(line, "//") == nullptr) return count;
            continue;
        }
        if (std::strstr(line, EndSigns[kind]) != nullptr) {
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
