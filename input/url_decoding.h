// The decoders behind ServerDecoding: one byte at a time, and on x86 in
// blocks where the processor has SSE2 (steps of 64 bytes) or SSSE3 (16
// bytes with the escapes decoded in registers). All give the same bytes for
// every input; the fuzz target url_round_trip holds them to it.
#ifndef KX_INPUT_URL_DECODING_H
#define KX_INPUT_URL_DECODING_H

#include <cstddef>
#include <vector>

namespace kx::input {

// Decodes the size bytes of in, a text whose NUL is at in[size], into out,
// which has room for size bytes; returns the number of bytes written.
using UrlDecoder = size_t (*)(const char *in, size_t size, char *out);

size_t DecodeByteWise(const char *in, size_t size, char *out);

// Every decoder this build and processor have: the byte-wise one first,
// the fastest last.
std::vector<UrlDecoder> AvailableDecoders();

// The decoder ServerDecoding uses, chosen on the first call of the process.
UrlDecoder ChosenDecoder();

}  // namespace kx::input

#endif
