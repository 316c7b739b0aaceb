// Text helpers: counted copies, joining, splitting and cutting.
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "core/alloc.h"
#include "core/text.h"
#include "kx_input.h"

namespace kx::input {
namespace {

std::string_view ViewOf(const char *text) { return text ? std::string_view(text) : std::string_view(); }

// The next occurrence of a separator (not empty) in text, or nullptr.
char *NextSeparator(char *text, std::string_view separator) {
    return separator.size() == 1 ? std::strchr(text, separator.front()) : std::strstr(text, separator.data());
}

// Writes the lengths collected by ErmittleTextElemente into a heap array.
int *HeapLengths(const std::vector<int> &lengths) {
    int *array = static_cast<int *>(kx::core::Allocate(lengths.size() * sizeof(int)));
    if (array != nullptr) std::memcpy(array, lengths.data(), lengths.size() * sizeof(int));
    return array;
}

}  // namespace
}  // namespace kx::input

extern "C" {

char *UtilsErzeugeText(const char *source, int length) {
    if (length < 0) length = 0;
    if (source == nullptr) return kx::core::HeapCopy({});
    return kx::core::HeapCopy({source, static_cast<size_t>(length)});
}

char *EweitereText(const char *text, const char *piece, int pieceLength, const char *separator) {
    const std::string_view head = kx::input::ViewOf(text), glue = kx::input::ViewOf(separator);
    const size_t tail = (piece != nullptr && pieceLength > 0) ? static_cast<size_t>(pieceLength) : 0;
    char *joined = static_cast<char *>(kx::core::Allocate(head.size() + glue.size() + tail + 1));
    if (joined == nullptr) return nullptr;
    char *p = joined;
    if (!head.empty()) std::memcpy(p, head.data(), head.size()), p += head.size();
    if (!glue.empty()) std::memcpy(p, glue.data(), glue.size()), p += glue.size();
    if (tail > 0) std::memcpy(p, piece, tail), p += tail;
    *p = '\0';
    return joined;
}

char *AddElement(char *text, const char *separator, const char *piece) {
    if (piece == nullptr) return text;
    char *joined = EweitereText(text, piece, static_cast<int>(std::strlen(piece)), separator);
    if (joined == nullptr) return text;  // out of memory: the list stays as it was
    std::free(text);
    return joined;
}

char *AddElementToInput(char *text, const char *separator, const char *piece, char *tail) {
    char *joined = AddElement(text, text != nullptr ? separator : nullptr, piece);
    joined = AddElement(joined, nullptr, tail);
    std::free(tail);
    return joined;
}

int MacheLetztesElementZumText(char *text) {
    if (text == nullptr) return 0;
    const size_t end = std::strcspn(text, "\r\n");
    text[end] = '\0';
    return static_cast<int>(end);
}

int ErmittleTextElemente(char *text, const char *separator, int *longest, int **lengths) {
    if (longest != nullptr) *longest = 0;
    if (lengths != nullptr) *lengths = nullptr;
    if (text == nullptr) return 0;
    // One pass, each element searched from where the last one ended: long
    // requests split into many elements in linear time. The lengths are only
    // collected for a caller who asks for them: most callers only count.
    const std::string_view glue = kx::input::ViewOf(separator);
    std::vector<int> found;
    int elements = 0, widest = 0;
    const auto take = [&](const char *start, const char *end) {
        const int length = static_cast<int>(end - start);
        widest = length > widest ? length : widest;
        if (lengths != nullptr) found.push_back(length);
        ++elements;
    };
    char *start = text;
    for (char *hit; !glue.empty() && (hit = kx::input::NextSeparator(start, glue)) != nullptr; start = hit + glue.size()) {
        take(start, hit);
        *hit = '\0';
    }
    // The last element's length only matters to a caller who asks for lengths.
    const bool measured = longest != nullptr || lengths != nullptr;
    take(start, measured ? start + std::strlen(start) : start);
    if (longest != nullptr) *longest = widest;
    if (lengths != nullptr) *lengths = kx::input::HeapLengths(found);
    return elements;
}

void UtilsErsetzeZeichen(char *text, const char *set, int setLength, char replacement) {
    if (text == nullptr || set == nullptr || setLength <= 0) return;
    for (char *p = text; *p; ++p)
        if (std::memchr(set, *p, static_cast<size_t>(setLength)) != nullptr) *p = replacement;
}

}  // extern "C"
