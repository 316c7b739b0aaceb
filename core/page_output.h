// The page a file-mode call of the page engine writes, kept in blocks: every
// piece of output goes into the running call's buffer, which is written to
// the page stream when it is full, when the call ends, and whenever another
// writer is about to reach the page (PageStream, a program call), so the
// page's bytes keep their order.
#ifndef KX_CORE_PAGE_OUTPUT_H
#define KX_CORE_PAGE_OUTPUT_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace kx::core {

// The buffer is written out once it holds this many bytes.
inline constexpr std::size_t kPageBlockSize = 64 * 1024;
// A page starts with a buffer this large, which grows to a whole block when
// the page outgrows it: most pages are a few kilobytes, and a small page
// then takes a small heap block instead of one of 64 KiB.
inline constexpr std::size_t kPageStartSize = 8 * 1024;
// The buffer has this many bytes more behind its block: a writer filling
// the room Extend gave may copy in whole moves that pass its end by up to
// kPageSlack bytes, which the next piece overwrites and no flush writes.
inline constexpr std::size_t kPageSlack = 64;

// The output of one file-mode call. While it lives, it is the running page's
// output; a call within a call takes over after flushing the outer one.
class PageOutput {
public:
    PageOutput();
    ~PageOutput();
    PageOutput(const PageOutput &) = delete;
    PageOutput &operator=(const PageOutput &) = delete;

    // Inline: a replayed row writes a few short pieces per value.
    void Write(std::string_view piece) {
        if (piece.size() <= capacity_ - used_) {
            std::memcpy(pending_.get() + used_, piece.data(), piece.size());
            used_ += piece.size();
        } else {
            WriteBlock(piece);
        }
    }
    // Room for n more bytes (n at most kPageBlockSize) at the end of the
    // pending ones, after writing those out when they leave too little: the
    // caller fills all n bytes before anything else is written, and may
    // write up to kPageSlack bytes more, which are not kept.
    char *Extend(std::size_t n) {
        if (n > capacity_ - used_) MakeRoom(n);
        char *room = pending_.get() + used_;
        used_ += n;
        return room;
    }
    // A large piece goes to the stream as it stands, after what is pending,
    // instead of through the buffer.
    void WriteThrough(std::string_view piece);
    // Writes what is pending to the page stream (_Utilsfpout, else stdout).
    void Flush();

private:
    void WriteBlock(std::string_view piece);
    // Room for n more bytes (n at most a block): the buffer grows to a
    // block, and is written out when that is not enough.
    void MakeRoom(std::size_t n);
    void Grow();

    std::unique_ptr<char[]> pending_; // capacity_ + kPageSlack bytes, used_ of them pending
    std::size_t capacity_ = kPageStartSize;
    std::size_t used_ = 0;
    PageOutput *outer_;
};

// Writes out what the running page has pending, if a page is running: called
// before anything else writes to the page stream.
void FlushPageOutput();

}  // namespace kx::core

#endif
