// ChangeFileContent and ErweitereBlock: editing a text file in place of one
// of its values, and joining memory blocks.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "core/alloc.h"
#include "companion/libKXUtils.h"
#include "core/file_lock.h"
#include "kx_template.h"
#include "input/assignment_actions.h"

namespace kx::input {
namespace {

struct FreeResource {
    void operator()(char *p) const { KXUtilsFreeResources(p); }
};
using ResourceText = std::unique_ptr<char, FreeResource>;

// The stop set: its first setLength bytes, but never beyond its own NUL.
std::string_view StopSet(const char *set, int setLength) {
    if (set == nullptr || setLength <= 0) return {};
    const size_t visible = std::strlen(set);
    const size_t length = static_cast<size_t>(setLength);
    return {set, length > visible ? visible + 1 : length};
}

// Offset of the first stop byte from `from` on; npos when none follows. A
// set that holds the NUL also stops at the end of the content.
size_t FindStop(std::string_view content, size_t from, std::string_view set) {
    const size_t stop = content.find_first_of(set, from);
    if (stop != std::string_view::npos) return stop;
    return set.find('\0') != std::string_view::npos ? content.size() : std::string_view::npos;
}

// Writes the new content: 0, or an errno value (ESRCH: the key or a stop
// byte after it is missing).
int Rewrite(const char *path, std::string_view content, const char *key, const char *text, std::string_view set) {
    const size_t at = content.find(key);
    if (at == std::string_view::npos) return ESRCH;
    const size_t valueStart = at + std::strlen(key);
    const size_t stop = FindStop(content, valueStart, set);
    if (stop == std::string_view::npos) return ESRCH;
    const int textLength = text ? static_cast<int>(std::strlen(text)) : -1;
    const ResourceText joined(KXUtilsAppendText(content.data(), static_cast<int>(valueStart), content.data() + stop,
                                                static_cast<int>(content.size() - stop), text, textLength));
    if (joined == nullptr) return ENOMEM;
    const size_t length = valueStart + (textLength > 0 ? static_cast<size_t>(textLength) : 0) + (content.size() - stop);
    int errorCode = 0;
    if (KXUtilsWriteMemoryToFileErrorOutput(path, joined.get(), static_cast<int>(length), &errorCode, nullptr) > 0)
        return 0;
    return errorCode != 0 ? errorCode : EIO;
}

size_t PartLength(const char *part, int length) { return (part != nullptr && length > 0) ? static_cast<size_t>(length) : 0; }

}  // namespace

int ChangeFileContentBecause(const char *path, const char *key, const char *text, const char *stopSet,
                             int stopSetLength) {
    if (path == nullptr || key == nullptr || *key == '\0') return EINVAL;
    if (KXUtilsFileExists(path) != 0) return ENOENT;
    // Read, change and write under one lock, so that no concurrent save of
    // another value is lost.
    const core::FileLock lock(path);
    if (!lock.Held()) return EWOULDBLOCK;
    char *raw = nullptr;
    int errorCode = 0;
    const int length = KXUtilsReadFileToMemoryErrorOutput(path, &raw, &errorCode, nullptr);
    const ResourceText buffer(raw);
    if (buffer == nullptr || length < 0) return errorCode != 0 ? errorCode : EIO;
    return Rewrite(path, std::string_view(buffer.get(), static_cast<size_t>(length)), key, text,
                   StopSet(stopSet, stopSetLength));
}

}  // namespace kx::input

extern "C" {

int ChangeFileContent(const char *path, const char *key, const char *text, const char *stopSet, int stopSetLength) {
    return kx::input::ChangeFileContentBecause(path, key, text, stopSet, stopSetLength) == 0 ? 0 : -1;
}

char *ErweitereBlock(const char *front, int frontLength, const char *back, int backLength, const char *middle,
                     int middleLength) {
    const size_t f = kx::input::PartLength(front, frontLength);
    const size_t m = kx::input::PartLength(middle, middleLength);
    const size_t b = kx::input::PartLength(back, backLength);
    // An empty block is still a block of its own, so null only means "no memory".
    char *block = static_cast<char *>(kx::core::Allocate(f + m + b > 0 ? f + m + b : 1));
    if (block == nullptr) return nullptr;
    if (f > 0) std::memcpy(block, front, f);
    if (m > 0) std::memcpy(block + f, middle, m);
    if (b > 0) std::memcpy(block + f + m, back, b);
    return block;
}

}  // extern "C"
