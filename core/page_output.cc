// The running page's output buffer and its flushes.
#include "core/page_output.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "kx_input.h"

namespace kx::core {
namespace {

// The output of the innermost file-mode call of this thread, or nullptr.
PageOutput *&Running() {
    thread_local PageOutput *running = nullptr;
    return running;
}

}  // namespace

PageOutput::PageOutput() : pending_(new char[kPageStartSize + kPageSlack]), outer_(Running()) {
    if (outer_ != nullptr) outer_->Flush();
    Running() = this;
}

PageOutput::~PageOutput() {
    Flush();
    Running() = outer_;
}

void PageOutput::Flush() {
    if (used_ == 0) return;
    std::fwrite(pending_.get(), 1, used_, _Utilsfpout != nullptr ? _Utilsfpout : stdout);
    used_ = 0;
}

// The buffer becomes a whole block, its pending bytes kept.
void PageOutput::Grow() {
    std::unique_ptr<char[]> block(new char[kPageBlockSize + kPageSlack]);
    std::memcpy(block.get(), pending_.get(), used_);
    pending_ = std::move(block);
    capacity_ = kPageBlockSize;
}

void PageOutput::MakeRoom(std::size_t n) {
    if (capacity_ < kPageBlockSize) Grow();
    if (n > capacity_ - used_) Flush();
}

// A piece that does not fit: a buffer smaller than a block grows first;
// then what is pending goes, and a piece of a block or more is written as
// it stands.
void PageOutput::WriteBlock(std::string_view piece) {
    MakeRoom(std::min(piece.size(), kPageBlockSize));
    if (piece.size() <= capacity_ - used_) {
        std::memcpy(pending_.get() + used_, piece.data(), piece.size());
        used_ += piece.size();
        return;
    }
    std::fwrite(piece.data(), 1, piece.size(), _Utilsfpout != nullptr ? _Utilsfpout : stdout);
}

void PageOutput::WriteThrough(std::string_view piece) {
    Flush();
    std::fwrite(piece.data(), 1, piece.size(), _Utilsfpout != nullptr ? _Utilsfpout : stdout);
}

void FlushPageOutput() {
    if (PageOutput *running = Running()) running->Flush();
}

}  // namespace kx::core
