// URL encoding and decoding of request values, file names and link values.
#include <clocale>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <array>
#include <string_view>

#include "core/alloc.h"
#include "core/text.h"
#include "kx_input.h"

int _mylog = 0;

namespace kx::input {
namespace {

// The characters that would break a query string, an HTML attribute or a
// path, in their fixed order; the blank comes first because it alone may
// become "+" instead of an escape.
constexpr std::string_view kEncoded = " \"/:+&=%~#'`>|";

// Per byte: how ServerEncoding writes it.
enum class Encode : unsigned char { Copy, Blank, Escape };

constexpr std::array<Encode, 256> EncodingTable() {
    std::array<Encode, 256> table{};
    for (char ch : kEncoded) table[static_cast<unsigned char>(ch)] = Encode::Escape;
    table[' '] = Encode::Blank;
    return table;
}
constexpr std::array<Encode, 256> kEncoding = EncodingTable();

constexpr char kHexDigits[] = "0123456789ABCDEF";

bool IsHex(char ch) {
    return (ch >= '0' && ch <= '9') || (ch >= 'A' && ch <= 'F') || (ch >= 'a' && ch <= 'f');
}

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

// Decodes in into out, which has room for strlen(in) bytes; returns the length.
size_t Decode(const char *in, char *out) {
    size_t o = 0;
    for (size_t i = 0; in[i] != '\0'; ++i) {
        const char ch = in[i];
        if (ch == '+') {
            out[o++] = ' ';
        } else if (ch != '%') {
            out[o++] = ch;
        } else if (in[i + 1] != '\0' && in[i + 2] != '\0' && IsHex(in[i + 1]) && IsHex(in[i + 2])) {
            out[o++] = x2c(in + i + 1);
            i += 2;
        } else if (const int n = DecodeWideEscape(in + i, out + o); n > 0) {
            o += static_cast<size_t>(n);
            i += 5;
        } else {
            out[o++] = '%';
        }
    }
    return o;
}

}  // namespace
}  // namespace kx::input

extern "C" {

char *ServerEncoding(const char *text, int *length, int encodeBlank, int doublePercent) {
    using kx::input::Encode;
    const std::string_view in = text ? text : "";
    const size_t escape = doublePercent == 1 ? 4 : 3;
    const Encode blank = encodeBlank ? Encode::Escape : Encode::Blank;
    auto kind = [&](char ch) {
        const Encode e = kx::input::kEncoding[static_cast<unsigned char>(ch)];
        return e == Encode::Blank ? blank : e;
    };
    size_t size = 0;
    for (char ch : in) size += kind(ch) == Encode::Escape ? escape : 1;
    char *out = static_cast<char *>(kx::core::Allocate(size + 1));
    if (out == nullptr) return nullptr;
    char *p = out;
    for (char ch : in) {
        switch (kind(ch)) {
        case Encode::Copy: *p++ = ch; break;
        case Encode::Blank: *p++ = '+'; break;
        case Encode::Escape:
            if (doublePercent == 1) *p++ = '%';
            *p++ = '%';
            *p++ = kx::input::kHexDigits[static_cast<unsigned char>(ch) >> 4];
            *p++ = kx::input::kHexDigits[static_cast<unsigned char>(ch) & 0xF];
            break;
        }
    }
    *p = '\0';
    if (length != nullptr) *length = static_cast<int>(size);
    return out;
}

char *ServerDecoding(const char *text) {
    if (text == nullptr) return kx::core::HeapCopy({});
    // The output is never longer than the input, so it is written straight
    // into the text handed back.
    char *out = static_cast<char *>(kx::core::Allocate(std::strlen(text) + 1));
    if (out == nullptr) return nullptr;
    out[kx::input::Decode(text, out)] = '\0';
    return out;
}

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
