// Block reads of a template file and the line buffer they fill.
#include "template/template_reader.h"

#include <algorithm>
#include <cstring>

namespace kx::tmpl {
namespace {

// A line buffer holds at least this many bytes once it holds any.
constexpr size_t kLineBufferStart = 4096;

// Counts in runs short enough for a byte-wide sum, which the compiler turns
// into vector compares.
size_t CountFeeds(const char *text, size_t n) {
    constexpr size_t kRun = 192; // three vectors of 64, and below a byte's 255
    size_t total = 0;
    for (size_t done = 0; done < n; done += kRun) {
        const size_t run = std::min(kRun, n - done);
        unsigned char sum = 0;
        for (size_t i = 0; i < run; ++i) sum = static_cast<unsigned char>(sum + (text[done + i] == '\n'));
        total += sum;
    }
    return total;
}

// The first of the bytes c in [from, stop), else stop.
const char *First(const char *from, const char *stop, char c) {
    const void *hit = std::memchr(from, c, static_cast<size_t>(stop - from));
    return hit != nullptr ? static_cast<const char *>(hit) : stop;
}

}  // namespace

void LineBuffer::Reserve(size_t n) {
    if (n <= size_) return;
    const size_t grown = std::max({n, 2 * size_, kLineBufferStart});
    std::unique_ptr<char[]> fresh(new char[grown]);
    if (size_ > 0) std::memcpy(fresh.get(), bytes_.get(), size_);
    bytes_.swap(fresh);
    size_ = grown;
}

// One byte more than a block, for the NUL that ends what was read.
TemplateReader::TemplateReader(std::FILE *in) : in_(in), block_(new char[kReadBlockSize + 1]) {}

// Moves the unread bytes to the front and reads behind them. False when no
// byte was added.
bool TemplateReader::Fill() {
    if (eof_) return false;
    if (pos_ > 0) {
        std::memmove(block_.get(), block_.get() + pos_, end_ - pos_);
        end_ -= pos_;
        pos_ = 0;
        block_[end_] = '\0';
    }
    if (end_ == kReadBlockSize) return false;
    const size_t got = std::fread(block_.get() + end_, 1, kReadBlockSize - end_, in_);
    if (got == 0) eof_ = true;
    end_ += got;
    block_[end_] = '\0';
    return got > 0;
}

bool TemplateReader::ReadLine(LineBuffer &line, size_t at) {
    bool any = false;
    for (bool whole = false; !whole;) {
        if (pos_ == end_ && !Fill()) break;
        const char *from = block_.get() + pos_;
        const auto *feed = static_cast<const char *>(std::memchr(from, '\n', end_ - pos_));
        whole = feed != nullptr;
        const size_t n = whole ? static_cast<size_t>(feed - from) + 1 : end_ - pos_;
        line.Reserve(at + n + 1);
        std::memcpy(line.data() + at, from, n);
        at += n;
        pos_ += n;
        any = true;
    }
    if (any) line[at] = '\0';
    return any;
}

std::string_view TemplateReader::TakePlainLines(char stop, char otherStop, int *lines) {
    *lines = 0;
    if (pos_ == end_ && !Fill()) return {};
    const char *from = block_.get() + pos_;
    // What was read ends with a NUL: one search finds a "{" or the first NUL.
    const char *end = strchrnul(from, stop);
    if (otherStop != stop) end = First(from, end, otherStop);
    const auto *feed = static_cast<const char *>(memrchr(from, '\n', static_cast<size_t>(end - from)));
    if (feed == nullptr) return {};
    const size_t n = static_cast<size_t>(feed - from) + 1;
    *lines = static_cast<int>(CountFeeds(from, n));
    pos_ += n;
    return {from, n};
}

}  // namespace kx::tmpl
