#include "core/text.h"

#include <cstring>

#include "core/alloc.h"
#include "kx_input.h"

namespace kx::core {

char *HeapCopy(std::string_view text) {
    auto *copy = static_cast<char *>(kx::core::Allocate(text.size() + 1));
    if (copy == nullptr) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

std::vector<std::string_view> Split(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> pieces;
    if (separator.empty()) return {text};
    for (std::size_t at = text.find(separator); at != std::string_view::npos; at = text.find(separator)) {
        pieces.push_back(text.substr(0, at));
        text.remove_prefix(at + separator.size());
    }
    pieces.push_back(text);
    return pieces;
}

Cut CutAt(std::string_view text, char separator) {
    const std::size_t at = text.find(separator);
    if (at == std::string_view::npos) return {text, {}, false};
    return {text.substr(0, at), text.substr(at + 1), true};
}

std::string Decoded(std::string_view encoded) {
    const std::string source(encoded);
    const HeapText decoded(ServerDecoding(source.c_str()));
    return std::string(decoded.View());
}

std::string Decoded(const char *encoded) {
    return encoded != nullptr ? Decoded(std::string_view(encoded)) : std::string();
}

}  // namespace kx::core
