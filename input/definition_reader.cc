// Definition lines into input entries.
#include "input/definition_reader.h"

#include <cstring>

#include "input/eingabe/declaration.h"
#include "platform/file_text.h"

namespace kx::request {
namespace {

std::string_view CutAtLineEnd(std::string_view text) { return text.substr(0, text.find_first_of("\r\n")); }

}  // namespace

// One search for a NUL in the whole content spares one in each line.
FileLines::FileLines(std::string_view content)
    : rest_(content), nul_(std::memchr(content.data(), '\0', content.size()) != nullptr) {}

std::optional<std::string_view> FileLines::Next() {
    if (rest_.empty()) return std::nullopt;
    const std::string_view piece = platform::NextLinePiece(rest_, kLineLimit);
    const std::string_view line = nul_ ? platform::UpToNul(piece) : piece;
    // A full buffer without the line end: pass over the rest of the line.
    if (line.size() == kLineLimit && line.back() != '\n') {
        const std::size_t end = rest_.find('\n');
        rest_.remove_prefix(end == rest_.npos ? rest_.size() : end + 1);
    }
    return line;
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
