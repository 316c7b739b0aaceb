// The reader of application definitions: line sources (a file, or a block of
// NUL-terminated texts in memory) and the rules that turn definition lines
// into entries of the input list.
#ifndef KX_INPUT_DEFINITION_READER_H
#define KX_INPUT_DEFINITION_READER_H

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "kx_input.h"

namespace kx::request {

// Bytes of the line buffer; one read takes at most kLineLimit bytes.
inline constexpr std::size_t kLineBufferSize = 4096;
inline constexpr std::size_t kLineLimit = kLineBufferSize - 1;
// The longest definition line a writer may write: it is read back as one
// line even with a CR and LF after it.
inline constexpr std::size_t kLongestWrittenLine = kLineLimit - 2;

// Where definition lines come from. The first line is the separator line.
class LineSource {
public:
    virtual ~LineSource() = default;
    // The next line (valid until the next call), or nothing at the end.
    virtual std::optional<std::string_view> Next() = 0;
};

// Lines of a file's content, read as a line buffer of kLineBufferSize bytes
// would read them: at most kLineLimit bytes per read. Of a longer line only
// its first kLineLimit bytes count: the rest is passed over, so that a long
// default can never bring a line of its own into the definition. A line ends
// at its first NUL byte. The content is read whole beforehand: one read of a
// small file instead of one library call per line.
class FileLines final : public LineSource {
public:
    explicit FileLines(std::string_view content);
    std::optional<std::string_view> Next() override;

private:
    std::string_view rest_;
    bool nul_;  // a NUL byte is in the content: lines are cut at it
};

// The texts of an in-memory block, up to the first empty text. With a piece
// limit, only that many bytes of a longer text count, as from a file.
class BlockLines final : public LineSource {
public:
    BlockLines(const char *block, std::size_t pieceLimit) : next_(block), pieceLimit_(pieceLimit) {}
    std::optional<std::string_view> Next() override;

private:
    const char *next_;
    std::size_t pieceLimit_;
};

// The list being filled and the name messages give for the definition.
struct DefinitionTarget {
    EingabeElement **list;
    int *count;
    std::string_view sourceName;
};

// The separator line cut at its first CR or LF.
std::string SeparatorOf(std::string_view firstLine);

// Applies every further line of lines to the target: entries declared before
// this call are updated, new names added. Problems go into the page as
// "<! ErmittleEingabe: ...>" comments.
void ReadDefinitionLines(LineSource &lines, std::string_view separator,
                         const DefinitionTarget &target);

}  // namespace kx::request

#endif
