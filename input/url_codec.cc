// URL encoding and decoding of request values, file names and link values.
#include <clocale>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "core/alloc.h"
#include "core/cpu.h"
#include "core/text.h"

// The block decoders need the SSE2 and SSSE3 intrinsics, which only x86
// builds have; elsewhere the byte-wise decoder is the only one.
#if KX_X86_BLOCKS
#include <emmintrin.h>
#include <tmmintrin.h>
#endif
#include "input/url_decoding.h"
#include "kx_input.h"

int _mylog = 0;

namespace kx::input {
namespace {

// The characters that would break a query string, an HTML attribute or a
// path, in their fixed order; the blank comes first because it alone may
// become "+" instead of an escape.
constexpr std::string_view kEncoded = " \"/:+&=%~#'`>|";

constexpr char kHexDigits[] = "0123456789ABCDEF";

// How ServerEncoding writes one byte: one to four bytes, padded to four so
// that every byte is written with one fixed-size store, without a branch.
struct alignas(8) Encoded {
    std::array<char, 4> bytes;
    unsigned char length;
};
using EncodingTable = std::array<Encoded, 256>;

constexpr EncodingTable MakeEncodingTable(bool escapeBlank, bool doublePercent) {
    EncodingTable table{};
    for (size_t b = 0; b < 256; ++b) table[b] = {{static_cast<char>(b)}, 1};
    for (const char ch : kEncoded) {
        const auto b = static_cast<unsigned char>(ch);
        Encoded escape{};
        if (doublePercent) escape.bytes[escape.length++] = '%';
        escape.bytes[escape.length++] = '%';
        escape.bytes[escape.length++] = kHexDigits[b >> 4];
        escape.bytes[escape.length++] = kHexDigits[b & 0xF];
        table[b] = escape;
    }
    if (!escapeBlank) table[' '] = {{'+'}, 1};
    return table;
}

// One table per pair of (escapeBlank, doublePercent).
constexpr std::array<EncodingTable, 4> kEncodingTables = {
    MakeEncodingTable(false, false), MakeEncodingTable(false, true),
    MakeEncodingTable(true, false),  MakeEncodingTable(true, true),
};

// Per byte: its value as a hexadecimal digit, or kNotHex.
constexpr unsigned char kNotHex = 0xFF;
constexpr std::array<unsigned char, 256> HexTable() {
    std::array<unsigned char, 256> table{};
    for (auto &value : table) value = kNotHex;
    for (int d = 0; d < 10; ++d) table[static_cast<size_t>('0' + d)] = static_cast<unsigned char>(d);
    for (int d = 0; d < 6; ++d) {
        table[static_cast<size_t>('A' + d)] = static_cast<unsigned char>(10 + d);
        table[static_cast<size_t>('a' + d)] = static_cast<unsigned char>(10 + d);
    }
    return table;
}
constexpr std::array<unsigned char, 256> kHex = HexTable();

unsigned char HexValue(char ch) { return kHex[static_cast<unsigned char>(ch)]; }
bool IsHex(char ch) { return HexValue(ch) != kNotHex; }

// The locale that "%u" escapes are converted into. Tried on the first such
// escape of the process and kept, so a missing locale costs one attempt.
enum class LocaleState { Untried, Set, Failed };

bool JapaneseLocaleSet() {
    static LocaleState state = LocaleState::Untried;
    if (state == LocaleState::Untried) {
        std::setlocale(LC_ALL, nullptr);
        state = std::setlocale(LC_ALL, "Japanese") ? LocaleState::Set : LocaleState::Failed;
    }
    return state == LocaleState::Set;
}

// "%u" + four characters at in: writes the multibyte character to out and
// returns how many bytes it took, or 0 when it cannot be converted. Only the
// first two characters after "u" are tested; the escape must be complete.
int DecodeWideEscape(const char *in, char *out) {
    if (in[1] != 'u' || !IsHex(in[2]) || !IsHex(in[3]) || in[4] == '\0' || in[5] == '\0') return 0;
    char multibyte[MB_LEN_MAX];
    const int n = JapaneseLocaleSet() ? u2dbcs(in + 2, multibyte) : -1;
    if (n < 1) return 0;
    const int kept = n < 3 ? n : 3;  // the escape's six input bytes hold at most three
    std::memcpy(out, multibyte, static_cast<size_t>(kept));
    return kept;
}

// What decoding the "%" at the start of in took and gave.
struct EscapeStep {
    size_t read, written;
};

// Decodes the escape whose "%" is in[0] into out. A "%" that starts no
// valid escape stands for itself.
inline EscapeStep DecodeEscape(const char *in, char *out) {
    const unsigned char high = HexValue(in[1]);
    // A NUL is no digit, so in[2] is read only while the text goes on.
    if (high != kNotHex) {
        if (const unsigned char low = HexValue(in[2]); low != kNotHex) {
            *out = static_cast<char>(high << 4 | low);
            return {3, 1};
        }
    }
    if (const int n = DecodeWideEscape(in, out); n > 0) return {6, static_cast<size_t>(n)};
    *out = '%';
    return {1, 1};
}

// Positions in the input and the output.
struct Cursor {
    size_t i, o;
};

// Decodes byte by byte from in[at.i] to out[at.o] until the input position
// reaches end; an escape that begins before end is decoded whole.
inline Cursor DecodeRun(const char *in, size_t end, char *out, Cursor at) {
    auto [i, o] = at;
    while (i < end) {
        const char ch = in[i];
        if (ch == '%') {
            const EscapeStep step = DecodeEscape(in + i, out + o);
            i += step.read;
            o += step.written;
        } else {
            out[o++] = ch == '+' ? ' ' : ch;
            ++i;
        }
    }
    return {i, o};
}

}  // namespace

size_t DecodeByteWise(const char *in, size_t size, char *out) {
    return DecodeRun(in, size, out, {0, 0}).o;
}

#if KX_X86_BLOCKS
// The block decoder works in steps of kStep bytes. A step with more escapes
// than one per kDenseBytes is decoded byte by byte: there the copies would
// cost more than they save (text that is mostly escapes, such as encoded
// Japanese).
constexpr size_t kStep = 64;
constexpr size_t kDenseBytes = 6;
// How far from its start a step may read and write: its bytes, an escape
// that begins at its last byte, and the copy behind that escape.
constexpr size_t kStepReach = kStep + 6 + kStep;
// Texts shorter than this are faster decoded byte by byte.
constexpr size_t kShortText = 32;

// Copies the 16 bytes at in to out with every "+" made a blank.
__attribute__((target("sse2"))) inline void CopyBlock(const char *in, char *out) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
    const __m128i plus = _mm_cmpeq_epi8(block, _mm_set1_epi8('+'));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out),
                     _mm_xor_si128(block, _mm_and_si128(plus, _mm_set1_epi8('+' ^ ' '))));
}

// The same for the kStep bytes at in.
__attribute__((target("sse2"))) inline void CopyStep(const char *in, char *out) {
    for (size_t k = 0; k < kStep; k += 16) CopyBlock(in + k, out + k);
}

// Bit k is set when in[k] is "%", for the kStep bytes at in.
__attribute__((target("sse2"))) inline uint64_t EscapesIn(const char *in) {
    uint64_t escapes = 0;
    for (size_t k = 0; k < kStep; k += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + k));
        escapes |= uint64_t{static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8('%'))))} << k;
    }
    return escapes;
}

// One step from at, which needs kStepReach bytes of in and of out. The step
// copies its bytes whole and finds all its escapes in one mask; behind each
// escape the next kStep bytes are copied again, moved up to close the gap,
// so no escape waits for a scan after the one before. A copy may run ahead
// of the output; later copies and escapes overwrite what it wrote there.
__attribute__((target("sse2"))) Cursor DecodeStep(const char *in, char *out, Cursor at) {
    auto [i, o] = at;  // in[i] is the next byte to decode, out[o] the next to write
    const size_t step = i;
    uint64_t escapes = EscapesIn(in + i);
    if (static_cast<size_t>(__builtin_popcountll(escapes)) > kStep / kDenseBytes)
        return DecodeRun(in, step + kStep, out, at);
    CopyStep(in + i, out + o);
    for (; escapes != 0; escapes &= escapes - 1) {
        const size_t escape = step + static_cast<size_t>(__builtin_ctzll(escapes));
        if (escape < i) continue;  // taken by the escape before it
        o += escape - i;
        const EscapeStep decoded = DecodeEscape(in + escape, out + o);
        i = escape + decoded.read;
        o += decoded.written;
        CopyStep(in + i, out + o);
    }
    // The rest of the step stands at out[o...] already.
    const size_t end = std::max(i, step + kStep);
    return {end, o + (end - i)};
}

// Steps while they stay inside the text (the output never overtakes the
// input, so they stay inside out too). The last bytes go through a copy
// padded with NULs: the steps copy a NUL like any byte, and a NUL ends an
// escape that reaches it as the text's own NUL does, so the padding comes
// out as it went in, after the decoded bytes.
__attribute__((target("sse2"))) size_t DecodeBlocks(const char *in, size_t size, char *out) {
    if (size < kShortText) return DecodeRun(in, size, out, {0, 0}).o;
    Cursor at{0, 0};
    while (size - at.i >= kStepReach) at = DecodeStep(in, out, at);
    const size_t rest = size - at.i;
    alignas(16) char padded[2 * kStepReach] = {};
    char decoded[2 * kStepReach];
    std::memcpy(padded, in + at.i, rest);
    Cursor tail{0, 0};
    while (tail.i < rest) tail = DecodeStep(padded, decoded, tail);
    const size_t written = tail.o - (tail.i - rest);
    std::memcpy(out + at.o, decoded, written);
    return at.o + written;
}
#endif

#if KX_X86_BLOCKS
namespace {

// The shuffle that gathers the bytes of an 8-byte half whose lanes are
// marked in a mask: entry m lists the lanes of m's set bits in order,
// counted from first (0 for the low half of a register, 8 for the high
// half); the lanes after them take index 0x80, which gives a zero byte.
using Gather = std::array<uint64_t, 256>;
constexpr Gather MakeGather(unsigned first) {
    Gather table{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        uint64_t lanes = 0x8080808080808080u;
        unsigned kept = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            if ((mask >> lane & 1) == 0) continue;
            lanes &= ~(uint64_t{0xFF} << 8 * kept);
            lanes |= uint64_t{first + lane} << 8 * kept++;
        }
        table[mask] = lanes;
    }
    return table;
}
constexpr Gather kGatherLow = MakeGather(0), kGatherHigh = MakeGather(8);

// The 16 bytes at in taken as hexadecimal digits: each lane's value (its
// low four bits, plus 9 for a letter, so always below 16; meaningless
// where the lane holds no digit) and a mask of the lanes that hold one. Each
// range test moves its range to the bottom of the signed bytes, so one
// comparison tests both ends; bytes of 0x80 and above fall outside both.
struct HexLanes {
    __m128i value, valid;
};
__attribute__((target("ssse3"))) inline HexLanes HexOf(const char *in) {
    const __m128i ch = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in));
    const __m128i lower = _mm_or_si128(ch, _mm_set1_epi8(0x20));  // only "A" to "F" become "a" to "f"
    const __m128i isDigit = _mm_cmplt_epi8(_mm_add_epi8(ch, _mm_set1_epi8(static_cast<char>(0x80 - '0'))),
                                           _mm_set1_epi8(static_cast<char>(0x80 + 10)));
    const __m128i isLetter = _mm_cmplt_epi8(_mm_add_epi8(lower, _mm_set1_epi8(static_cast<char>(0x80 - 'a'))),
                                            _mm_set1_epi8(static_cast<char>(0x80 + 6)));
    const __m128i value = _mm_add_epi8(_mm_and_si128(ch, _mm_set1_epi8(0x0F)), _mm_and_si128(isLetter, _mm_set1_epi8(9)));
    return {value, _mm_or_si128(isDigit, isLetter)};
}

// Asks for the input kPrefetch bytes ahead of in. On a text of many
// megabytes the processor's own prefetching kept the 16-byte decoder waiting
// for its input about half the time. A prefetch never faults, so it may
// name bytes behind the text's end.
constexpr size_t kPrefetch = 1024;
__attribute__((target("sse2"))) inline void Prefetch(const char *in) { _mm_prefetch(in + kPrefetch, _MM_HINT_T0); }

// Where the 16-byte decoder stands: the input and output positions; the
// lanes at the start of the next block that hold the digits of an escape
// begun in the block before (bit 0 for its first byte, bit 1 for its
// second); and all ones when the block before held no "%", else 0.
struct Lanes {
    Cursor at;
    unsigned taken, calm;
};

// Writes the lanes of decoded whose bits are set in kept to out, in order,
// with two 8-byte stores; returns how many bytes that is. Up to 16 bytes
// from out are written.
__attribute__((target("ssse3,popcnt"))) inline size_t Compact(__m128i decoded, unsigned kept, char *out) {
    const unsigned low = kept & 0xFF, high = kept >> 8;
    const __m128i lowGather = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(&kGatherLow[low]));
    const __m128i gather = _mm_castps_si128(
        _mm_loadh_pi(_mm_castsi128_ps(lowGather), reinterpret_cast<const __m64 *>(&kGatherHigh[high])));
    const __m128i packed = _mm_shuffle_epi8(decoded, gather);
    const auto lowCount = static_cast<size_t>(__builtin_popcount(low));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out), packed);
    _mm_storeh_pd(reinterpret_cast<double *>(out + lowCount), _mm_castsi128_pd(packed));
    return lowCount + static_cast<size_t>(__builtin_popcount(high));
}

// One block of 16 bytes from at.i, which may read 18 bytes of in (its own,
// and the two digits of an escape in its last lanes) and write 16 of out.
// Every valid escape is decoded in the registers: its lane takes the byte
// the digits denote and the two digit lanes are dropped. Valid escapes
// never overlap, since a digit is no "%". A "%" that starts no valid escape
// but may start a "%u" escape sends the block to the byte-wise decoder.
__attribute__((target("ssse3,popcnt"))) inline Lanes DecodeBlock16(const char *in, char *out, Lanes from) {
    const auto [i, o] = from.at;
    Prefetch(in + i);
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + i));
    const __m128i plus = _mm_cmpeq_epi8(block, _mm_set1_epi8('+'));
    const __m128i plain = _mm_xor_si128(block, _mm_and_si128(plus, _mm_set1_epi8('+' ^ ' ')));
    const __m128i percent = _mm_cmpeq_epi8(block, _mm_set1_epi8('%'));
    const auto percents = static_cast<unsigned>(_mm_movemask_epi8(percent));
    // Lane k of next holds in[i + k + 1], the first digit of an escape at
    // lane k; the second digits are the same lanes one further, the last
    // one (in[i + 17]) looked up on its own.
    const HexLanes next = HexOf(in + i + 1);
    const unsigned char last = HexValue(in[i + 17]);
    const __m128i lastValid = _mm_cvtsi32_si128(last != kNotHex ? 0xFF : 0);
    const __m128i lowValid = _mm_alignr_epi8(lastValid, next.valid, 1);
    const __m128i escape = _mm_and_si128(percent, _mm_and_si128(next.valid, lowValid));
    const auto escapes = static_cast<unsigned>(_mm_movemask_epi8(escape));
    if ((percents & ~escapes) != 0) {
        const __m128i u = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(in + i + 1)), _mm_set1_epi8('u'));
        if ((percents & ~escapes & static_cast<unsigned>(_mm_movemask_epi8(u))) != 0) {
            const size_t start = i + static_cast<size_t>(__builtin_popcount(from.taken));
            return {DecodeRun(in, i + 16, out, {start, o}), 0, 0};
        }
    }
    // Every lane's value is below 16, so the 16-bit shift moves no bit into
    // the next lane.
    const __m128i low = _mm_alignr_epi8(_mm_cvtsi32_si128(last), next.value, 1);
    const __m128i value = _mm_or_si128(_mm_slli_epi16(next.value, 4), low);
    const __m128i decoded = _mm_or_si128(_mm_and_si128(escape, value), _mm_andnot_si128(escape, plain));
    const unsigned digits = escapes << 1 | escapes << 2 | from.taken;
    return {{i + 16, o + Compact(decoded, ~digits & 0xFFFF, out + o)}, digits >> 16, percents == 0 ? ~0u : 0u};
}

// After this many blocks in a row without a "%", the text is taken as plain
// and copied in steps for as long as it stays so. A block that decodes its
// escapes costs the same with one escape or none, and a test per block for
// one kind or the other would be mispredicted on query text, where blocks
// with and without escapes alternate at random; that test would cost more
// than the block.
constexpr unsigned kCalmBlocks = 8;

// Copies whole steps from at while they hold no "%" and the NUL stays
// beyond them.
__attribute__((target("sse2"))) inline Cursor CopyCalmSteps(const char *in, size_t size, char *out, Cursor at) {
    while (size - at.i > kStep && EscapesIn(in + at.i) == 0) {
        Prefetch(in + at.i);
        CopyStep(in + at.i, out + at.o);
        at.i += kStep;
        at.o += kStep;
    }
    return at;
}

// Blocks of 16 bytes while their reach stays inside the text (the NUL at
// in[size] may be read); the rest byte by byte. After a calm block no
// escape reaches into the next, so the steps start on a whole byte.
__attribute__((target("ssse3,popcnt"))) size_t DecodeBlocks16(const char *in, size_t size, char *out) {
    Lanes at{{0, 0}, 0, 0};
    unsigned calmBlocks = 0;
    while (at.at.i + 17 <= size) {
        if (calmBlocks >= kCalmBlocks) {
            at.at = CopyCalmSteps(in, size, out, at.at);
            calmBlocks = 0;
            continue;
        }
        at = DecodeBlock16(in, out, at);
        calmBlocks = (calmBlocks + 1) & at.calm;
    }
    const size_t start = at.at.i + static_cast<size_t>(__builtin_popcount(at.taken));
    return DecodeRun(in, size, out, {start, at.at.o}).o;
}

}  // namespace
#endif

std::vector<UrlDecoder> AvailableDecoders() {
    std::vector<UrlDecoder> decoders{DecodeByteWise};
#if KX_X86_BLOCKS
    if (kx::core::HasSse2()) decoders.push_back(DecodeBlocks);
    if (kx::core::HasSsse3AndPopcnt()) decoders.push_back(DecodeBlocks16);
#endif
    return decoders;
}

UrlDecoder ChosenDecoder() {
    static const UrlDecoder chosen = AvailableDecoders().back();
    return chosen;
}

namespace {

// A decoded text of many megabytes is a fresh block that the kernel maps
// page by page as it is written; in 4 KiB pages that costs about as much as
// the decoding. Such a block is asked to be mapped in huge pages (2 MiB on
// x86-64), which the kernel grants where transparent huge pages are on for
// every mapping or for those that ask. Only whole huge pages inside the
// block are named, so the advice concerns no byte of any other block; it is
// advice only (a failure changes nothing), and after free() the pages are
// unmapped or given back to the allocator like any others.
constexpr size_t kHugePage = size_t{2} << 20;
constexpr size_t kHugeText = 2 * kHugePage;

char *AllocateText(size_t bytes) {
    char *text = static_cast<char *>(kx::core::Allocate(bytes));
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (text != nullptr && bytes >= kHugeText) {
        const auto start = (reinterpret_cast<uintptr_t>(text) + kHugePage - 1) & ~(kHugePage - 1);
        const auto end = (reinterpret_cast<uintptr_t>(text) + bytes) & ~(kHugePage - 1);
        if (end > start) madvise(reinterpret_cast<void *>(start), end - start, MADV_HUGEPAGE);
    }
#endif
    return text;
}

}  // namespace
}  // namespace kx::input

extern "C" {

char *ServerEncoding(const char *text, int *length, int encodeBlank, int doublePercent) {
    const std::string_view in = text ? text : "";
    const size_t size = in.size();
    const auto &table = kx::input::kEncodingTables[(encodeBlank ? 2 : 0) + (doublePercent == 1 ? 1 : 0)];
    auto of = [&](size_t i) -> const kx::input::Encoded & { return table[static_cast<unsigned char>(in[i])]; };
    size_t encoded = 0;
    for (size_t i = 0; i < size; ++i) encoded += of(i).length;
    char *out = kx::input::AllocateText(encoded + 1);
    if (out == nullptr) return nullptr;
    // Every byte gives at least one, so while four bytes of input are left
    // there is room for a four-byte store.
    size_t i = 0, o = 0;
    for (; size - i >= 4; ++i) {
        std::memcpy(out + o, of(i).bytes.data(), 4);
        o += of(i).length;
    }
    for (; i < size; o += of(i).length, ++i) std::memcpy(out + o, of(i).bytes.data(), of(i).length);
    out[encoded] = '\0';
    if (length != nullptr) *length = static_cast<int>(encoded);
    return out;
}

char *ServerDecoding(const char *text) {
    if (text == nullptr) return kx::core::HeapCopy({});
    // The output is never longer than the input, so it is written straight
    // into the text handed back.
    const size_t size = std::strlen(text);
    char *out = kx::input::AllocateText(size + 1);
    if (out == nullptr) return nullptr;
    out[kx::input::ChosenDecoder()(text, size, out)] = '\0';
    return out;
}

// Unlike the decoder, x2c tests no character: any two bytes give a value.
char x2c(const char *hex) {
    auto digit = [](unsigned char ch) { return ch < 'A' ? ch - '0' : (ch & 0xDF) - 55; };
    const int value = 16 * digit(static_cast<unsigned char>(hex[0])) + digit(static_cast<unsigned char>(hex[1]));
    return static_cast<char>(static_cast<unsigned char>(value & 0xFF));
}

char atox(char ch) {
    if (ch >= 'A' && ch <= 'F') return static_cast<char>(ch - 'A' + 10);
    if (ch >= 'a' && ch <= 'f') return static_cast<char>(ch - 'a' + 10);
    if (ch >= '0' && ch <= '9') return static_cast<char>(ch - '0');
    return ch;
}

int u2dbcs(const char *hex, char *out) {
    if (_mylog) std::printf("u2dbcs: input: %4s\n", hex);
    const wchar_t wide = static_cast<wchar_t>(256 * static_cast<unsigned char>(x2c(hex)) +
                                              static_cast<unsigned char>(x2c(hex + 2)));
    if (_mylog) std::printf("wide character: %4x\n", static_cast<unsigned>(wide));
    const int n = std::wctomb(out, wide);
    if (_mylog) {
        if (n == -1) {
            std::printf("u2dbcs: Conversion not successful - wctomb failed.\n");
        } else {
            std::printf("\tCharacters converted: %u\n", static_cast<unsigned>(n));
            std::printf("\tMultibyte character: %.*s\n\n", n, out);
        }
    }
    return n;
}

}  // extern "C"
