// The page a file-mode call of the page engine writes, kept in blocks: every
// piece of output goes into the running call's buffer, which is written to
// the page stream when it is full, when the call ends, and whenever another
// writer is about to reach the page (PageStream, a program call), so the
// page's bytes keep their order.
#ifndef KX_CORE_PAGE_OUTPUT_H
#define KX_CORE_PAGE_OUTPUT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace kx::core {

// The buffer is written out once it holds this many bytes.
inline constexpr std::size_t kPageBlockSize = 64 * 1024;

// The output of one file-mode call. While it lives, it is the running page's
// output; a call within a call takes over after flushing the outer one.
class PageOutput {
public:
    PageOutput();
    ~PageOutput();
    PageOutput(const PageOutput &) = delete;
    PageOutput &operator=(const PageOutput &) = delete;

    void Write(std::string_view piece) {
        if (pending_.size() + piece.size() <= kPageBlockSize) pending_.append(piece);
        else WriteBlock(piece);
    }
    // A large piece goes to the stream as it stands, after what is pending,
    // instead of through the buffer.
    void WriteThrough(std::string_view piece);
    // Writes what is pending to the page stream (_Utilsfpout, else stdout).
    void Flush();

private:
    void WriteBlock(std::string_view piece);

    std::string pending_;
    PageOutput *outer_;
};

// Writes out what the running page has pending, if a page is running: called
// before anything else writes to the page stream.
void FlushPageOutput();

}  // namespace kx::core

#endif
