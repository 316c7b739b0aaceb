// Block reads of a template file and the line buffer they fill.
#include "template/template_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/cpu.h"

#if KX_X86_BLOCKS
#include <immintrin.h>
#endif

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

// The whole lines before end, which the feeds counted before it hold.
PlainLines LinesBefore(const char *text, const char *end, size_t feeds) {
    const auto stop = static_cast<size_t>(end - text);
    const auto *last = static_cast<const char *>(memrchr(text, '\n', stop));
    if (last == nullptr) return {0, 0, stop};
    return {static_cast<size_t>(last - text) + 1, feeds, stop};
}

#if KX_X86_BLOCKS
// Groups of four vectors; the feed counts of a group go into byte lanes, so
// at most 63 groups (four feeds a lane each) are counted before the lanes
// are summed.
constexpr size_t kGroup = 64;
constexpr size_t kWideGroup = 128;
constexpr int kGroupsPerSum = 63;
static_assert(kWideGroup <= kScanPadding, "a group holding the NUL is read whole");

__attribute__((target("sse2"))) inline __m128i StopsIn(__m128i block, __m128i stop, __m128i otherStop) {
    const __m128i nul = _mm_cmpeq_epi8(block, _mm_setzero_si128());
    return _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(block, stop), _mm_cmpeq_epi8(block, otherStop)), nul);
}

__attribute__((target("sse2"))) inline size_t SumLanes(__m128i counts) {
    const __m128i sums = _mm_sad_epu8(counts, _mm_setzero_si128());
    return static_cast<size_t>(_mm_cvtsi128_si32(sums)) + static_cast<size_t>(_mm_extract_epi16(sums, 4));
}

__attribute__((target("avx2"))) inline size_t WideSumLanes(__m256i counts) {
    const __m256i sums = _mm256_sad_epu8(counts, _mm256_setzero_si256());
    const __m128i pairs = _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    return static_cast<size_t>(_mm_cvtsi128_si64(pairs)) + static_cast<size_t>(_mm_extract_epi16(pairs, 4));
}

// From at, sixteen bytes at a time up to the first stop: adds the feeds
// before it to *feeds and returns where it stands.
__attribute__((target("sse2"))) const char *LastVectors(const char *at, __m128i stop, __m128i otherStop,
                                                          size_t *feeds) {
    const __m128i feed = _mm_set1_epi8('\n');
    for (;; at += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
        const auto stops = static_cast<unsigned>(_mm_movemask_epi8(StopsIn(block, stop, otherStop)));
        auto feedBits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, feed)));
        if (stops != 0) feedBits &= (1u << __builtin_ctz(stops)) - 1;
        *feeds += static_cast<size_t>(__builtin_popcount(feedBits));
        if (stops != 0) return at + __builtin_ctz(stops);
    }
}

// The bytes of the group at that stop: a NUL, stop or (unless it is the
// same byte) otherStop. A NUL is found through the group's least bytes.
template <bool kOneStop>
__attribute__((target("sse2"))) inline bool GroupStops(const __m128i (&block)[4], __m128i stop, __m128i otherStop) {
    const __m128i least = _mm_min_epu8(_mm_min_epu8(block[0], block[1]), _mm_min_epu8(block[2], block[3]));
    __m128i stops = _mm_cmpeq_epi8(least, _mm_setzero_si128());
    for (int k = 0; k < 4; ++k) {
        stops = _mm_or_si128(stops, _mm_cmpeq_epi8(block[k], stop));
        if constexpr (!kOneStop) stops = _mm_or_si128(stops, _mm_cmpeq_epi8(block[k], otherStop));
    }
    return _mm_movemask_epi8(stops) != 0;
}

// Whole groups up to the one holding a stop; adds their feeds to *feeds and
// returns that group's start.
template <bool kOneStop>
__attribute__((target("sse2"))) const char *PlainGroups(const char *at, __m128i stop, __m128i otherStop,
                                                          size_t *feeds) {
    const __m128i feed = _mm_set1_epi8('\n');
    for (;;) {
        __m128i counts = _mm_setzero_si128();
        for (int group = 0; group < kGroupsPerSum; ++group, at += kGroup) {
            __m128i block[4];
            for (int k = 0; k < 4; ++k) block[k] = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at + 16 * k));
            if (GroupStops<kOneStop>(block, stop, otherStop)) {
                *feeds += SumLanes(counts);
                return at;
            }
            // A feed compares as -1 in its lane.
            for (int k = 0; k < 4; ++k) counts = _mm_sub_epi8(counts, _mm_cmpeq_epi8(block[k], feed));
        }
        *feeds += SumLanes(counts);
    }
}

// The same with 32-byte vectors, 128 bytes a group.
template <bool kOneStop>
__attribute__((target("avx2"))) const char *WidePlainGroups(const char *at, char stopByte, char otherByte,
                                                              size_t *feeds) {
    const __m256i stop = _mm256_set1_epi8(stopByte), otherStop = _mm256_set1_epi8(otherByte);
    const __m256i feed = _mm256_set1_epi8('\n'), zero = _mm256_setzero_si256();
    for (;;) {
        __m256i counts = zero;
        for (int group = 0; group < kGroupsPerSum; ++group, at += kWideGroup) {
            __m256i block[4];
            for (int k = 0; k < 4; ++k)
                block[k] = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(at + 32 * k));
            const __m256i least =
                _mm256_min_epu8(_mm256_min_epu8(block[0], block[1]), _mm256_min_epu8(block[2], block[3]));
            __m256i stops = _mm256_cmpeq_epi8(least, zero);
            for (int k = 0; k < 4; ++k) {
                stops = _mm256_or_si256(stops, _mm256_cmpeq_epi8(block[k], stop));
                if constexpr (!kOneStop) stops = _mm256_or_si256(stops, _mm256_cmpeq_epi8(block[k], otherStop));
            }
            if (_mm256_testz_si256(stops, stops) == 0) {
                *feeds += WideSumLanes(counts);
                return at;
            }
            for (int k = 0; k < 4; ++k) counts = _mm256_sub_epi8(counts, _mm256_cmpeq_epi8(block[k], feed));
        }
        *feeds += WideSumLanes(counts);
    }
}


__attribute__((target("sse2"))) PlainLines ScanPlainSse2(const char *text, char stopByte, char otherByte) {
    const __m128i stop = _mm_set1_epi8(stopByte), otherStop = _mm_set1_epi8(otherByte);
    size_t feeds = 0;
    const char *at = stopByte == otherByte ? PlainGroups<true>(text, stop, otherStop, &feeds)
                                           : PlainGroups<false>(text, stop, otherStop, &feeds);
    return LinesBefore(text, LastVectors(at, stop, otherStop, &feeds), feeds);
}

// The group holding the stop goes through the 16-byte steps.
__attribute__((target("avx2"))) PlainLines ScanPlainAvx2(const char *text, char stopByte, char otherByte) {
    size_t feeds = 0;
    const char *at = stopByte == otherByte ? WidePlainGroups<true>(text, stopByte, otherByte, &feeds)
                                           : WidePlainGroups<false>(text, stopByte, otherByte, &feeds);
    const char *end = LastVectors(at, _mm_set1_epi8(stopByte), _mm_set1_epi8(otherByte), &feeds);
    return LinesBefore(text, end, feeds);
}
#endif

}  // namespace

PlainLines ScanPlainByteWise(const char *text, char stop, char otherStop) {
    // The text ends with a NUL: one search finds a stop or that NUL.
    const char *end = strchrnul(text, stop);
    if (otherStop != stop) end = First(text, end, otherStop);
    const PlainLines lines = LinesBefore(text, end, 0);
    return {lines.length, CountFeeds(text, lines.length), lines.stop};
}

PlainScanner Sse2Scanner() {
#if KX_X86_BLOCKS
    if (core::HasSse2()) return ScanPlainSse2;
#endif
    return nullptr;
}

PlainScanner Avx2Scanner() {
#if KX_X86_BLOCKS
    if (core::HasAvx2()) return ScanPlainAvx2;
#endif
    return nullptr;
}

PlainScanner ChosenScanner() {
    if (const PlainScanner wide = Avx2Scanner()) return wide;
    if (const PlainScanner blocks = Sse2Scanner()) return blocks;
    return ScanPlainByteWise;
}

void LineBuffer::Reserve(size_t n) {
    if (n <= size_) return;
    const size_t grown = std::max({n, 2 * size_, kLineBufferStart});
    std::unique_ptr<char[]> fresh(new char[grown]);
    if (size_ > 0) std::memcpy(fresh.get(), bytes_.get(), size_);
    bytes_.swap(fresh);
    size_ = grown;
}

namespace {

// A block one byte longer than a file known to be smaller than a whole
// block: its first read comes back short, which tells the file's end. A
// size of 0 tells nothing (a pipe, a file of /proc).
size_t BlockSizeFor(long size) {
    return size > 0 && static_cast<unsigned long>(size) < kReadBlockSize ? static_cast<size_t>(size) + 1
                                                                         : kReadBlockSize;
}

}  // namespace

// Room for a carried line, a block, the NUL that ends what was read, and what
// a scanner may read past it. Those bytes may hold anything: the scanners'
// answers end at the NUL.
TemplateReader::TemplateReader(std::FILE *in, long size)
    : in_(in),
      scan_(ChosenScanner()),
      blockSize_(BlockSizeFor(size)),
      block_(new char[kCarryRoom + blockSize_ + 1 + kScanPadding]) {}

// Reads the next block behind the carry room: a whole block each time, which
// the C library reads straight into place. False when nothing was read. A
// short read is the file's end (or a read error, which ends it as well), so
// no further read asks again.
bool TemplateReader::Fill() {
    if (eof_) return false;
    const size_t got = std::fread(block_.get() + kCarryRoom, 1, blockSize_, in_);
    if (got < blockSize_) eof_ = true;
    pos_ = kCarryRoom;
    end_ = kCarryRoom + got;
    block_[end_] = '\0';
    return got > 0;
}

// Moves the unread end of the block, a line without a stop that the block's
// end cut, in front of the next block and reads that block. False (nothing
// moved) when the line is too long for the room or the file has ended.
bool TemplateReader::Carry() {
    const size_t tail = end_ - pos_;
    if (eof_ || tail > kCarryRoom) return false;
    std::memmove(block_.get() + kCarryRoom - tail, block_.get() + pos_, tail);
    Fill();
    pos_ = kCarryRoom - tail;
    return true;
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
    PlainLines plain = scan_(block_.get() + pos_, stop, otherStop);
    // No whole line before the block's own NUL: the line goes on in the next
    // block.
    if (plain.length == 0 && pos_ + plain.stop == end_ && Carry()) plain = scan_(block_.get() + pos_, stop, otherStop);
    const char *from = block_.get() + pos_;
    *lines = static_cast<int>(plain.feeds);
    pos_ += plain.length;
    return {from, plain.length};
}

}  // namespace kx::tmpl
