// The running page's output buffer and its flushes.
#include "core/page_output.h"

#include <cstdio>

#include "kx_input.h"

namespace kx::core {
namespace {

// The output of the innermost file-mode call of this thread, or nullptr.
PageOutput *&Running() {
    thread_local PageOutput *running = nullptr;
    return running;
}

}  // namespace

PageOutput::PageOutput() : pending_(new char[kPageBlockSize + kPageSlack]), outer_(Running()) {
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

// A piece that does not fit: what is pending goes first, then a piece of a
// block or more is written as it stands.
void PageOutput::WriteBlock(std::string_view piece) {
    Flush();
    if (piece.size() < kPageBlockSize) {
        std::memcpy(pending_.get(), piece.data(), piece.size());
        used_ = piece.size();
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
