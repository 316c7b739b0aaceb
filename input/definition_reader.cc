// Definition lines into input entries.
#include "input/definition_reader.h"

#include <cstring>

#include "input/eingabe/declaration.h"

namespace kx::request {
namespace {

std::string_view CutAtLineEnd(std::string_view text) { return text.substr(0, text.find_first_of("\r\n")); }

}  // namespace

std::optional<std::string_view> FileLines::Next() {
    if (std::fgets(buffer_.data(), static_cast<int>(buffer_.size()), file_) == nullptr) return std::nullopt;
    const std::size_t length = std::strlen(buffer_.data());
    // A full buffer without the line end: pass over the rest of the line.
    if (length == kLineLimit && buffer_[length - 1] != '\n') {
        int ch;
        do ch = std::fgetc(file_);
        while (ch != '\n' && ch != EOF);
    }
    return std::string_view(buffer_.data(), length);
}

std::optional<std::string_view> BlockLines::Next() {
    const std::string_view text(next_);
    if (text.empty()) return std::nullopt;
    next_ += text.size() + 1;
    return text.substr(0, pieceLimit_);
}

std::string SeparatorOf(std::string_view firstLine) { return std::string(CutAtLineEnd(firstLine)); }

void ReadDefinitionLines(LineSource &lines, std::string_view separator,
                         const DefinitionTarget &target) {
    // A line updates an entry declared before the definition began, and only
    // such an entry; into an empty list (a CGI request's definition) every
    // line adds its entry, and there is nothing to look up or index.
    const int before = *target.count;
    core::NameIndex index;
    const input::DeclarationTarget declaration{target.list, target.count, before, target.sourceName,
                                               before > 0 ? &index : nullptr};
    while (const auto next = lines.Next()) input::DeclareFromLine(declaration, *next, separator);
}

}  // namespace kx::request
