// The text operations that take the input and nothing else, one harness for
// all: the first byte picks the operation, the rest is its input. Each
// operation checks what its result must satisfy and aborts when it does not.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "fuzz_input.h"
#include "kx_input.h"

namespace {

// ChangeSubText: set, replacement, text; the reported length is the length
// of the text it made.
void ChangeSub(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 3);
    const std::string &set = texts[0];
    const char *text = texts[2].c_str();
    int length = -1;
    char *changed = ChangeSubText(text, set.c_str(), static_cast<int>(set.size()), texts[1].c_str(), &length);
    if (changed == text) return;
    if (length != static_cast<int>(std::strlen(changed))) std::abort();
    std::free(changed);
}

// GetIndexedValue by position or by keyword (empty: none) over any text.
void IndexedValue(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 3);
    std::free(GetIndexedValue(texts[2].c_str(), texts[0].c_str(), texts[1].empty() ? nullptr : texts[1].c_str()));
}

// PairIt: open, close, text; finds a closing marker inside the text, or
// gives the text back.
void Pair(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 3);
    const char *text = texts[2].c_str();
    const char *close = texts[1].c_str();
    const char *found = PairIt(text, texts[0].c_str(), close);
    if (found != text && (found < text || found > text + std::strlen(text) ||
                          std::strncmp(found, close, std::strlen(close)) != 0))
        std::abort();
}

// ErmittleTextElemente: separator, text; element count, lengths and longest
// agree with the text.
void TextElements(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 2);
    const std::string &separator = texts[0];
    if (separator.empty()) return;
    std::string text = texts[1].c_str();
    int longest = -1, *lengths = nullptr;
    const int count = ErmittleTextElemente(text.data(), separator.c_str(), &longest, &lengths);
    size_t total = 0;
    int greatest = 0;
    for (int i = 0; i < count; ++i) {
        total += static_cast<size_t>(lengths[i]);
        greatest = lengths[i] > greatest ? lengths[i] : greatest;
    }
    if (total + static_cast<size_t>(count - 1) * separator.size() != text.size() || greatest != longest) std::abort();
    std::free(lengths);
}

// UtilsCreateOuput: two bytes give first and number (-8 .. 119), then the
// separator up to the first NUL byte, then the text; the result is part of
// the text.
void ElementRange(const uint8_t *data, size_t size) {
    if (size < 2) return;
    const int first = data[0] % 128 - 8;
    const int number = data[1] % 128 - 8;
    const std::string rest(reinterpret_cast<const char *>(data + 2), size - 2);
    const std::string separator(rest.c_str());
    const std::string text = separator.size() < rest.size() ? rest.substr(separator.size() + 1) : "";
    char *heap = static_cast<char *>(std::malloc(text.size() + 1));
    std::memcpy(heap, text.c_str(), text.size() + 1);
    char *result = UtilsCreateOuput(heap, separator.c_str(), first, number);
    if (std::string_view(text.c_str()).find(result) == std::string_view::npos) std::abort();
    std::free(result);
}

// ServerDecoding: the output is never longer than the input.
void Decoding(const uint8_t *data, size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    char *decoded = ServerDecoding(text.c_str());
    if (std::strlen(decoded) > std::strlen(text.c_str())) std::abort();
    std::free(decoded);
}

// PositioniereAufSchluesselwortWert: query, key and assignment text separated
// by NUL bytes (missing ones null); the value lies within the query.
void QueryKey(const uint8_t *data, size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    const char *parts[3] = {nullptr, nullptr, nullptr};
    size_t start = 0;
    for (int part = 0; part < 3 && start <= input.size(); ++part) {
        parts[part] = input.c_str() + start;
        start += std::strlen(parts[part]) + 1;
    }
    const char *value = PositioniereAufSchluesselwortWert(parts[0], parts[1], parts[2]);
    if (value != nullptr && (value < parts[0] || value > parts[0] + std::strlen(parts[0]))) std::abort();
}

// The selector byte's value modulo the row count picks the row; the seed
// files are named after the rows.
using Operation = void (*)(const uint8_t *, size_t);
constexpr Operation kOperations[] = {
    ChangeSub,     // 0 change_sub_text
    IndexedValue,  // 1 indexed_value
    Pair,          // 2 pair_it
    TextElements,  // 3 text_elements
    ElementRange,  // 4 element_range
    Decoding,      // 5 server_decoding
    QueryKey,      // 6 query_key
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    kOperations[data[0] % std::size(kOperations)](data + 1, size - 1);
    return 0;
}
