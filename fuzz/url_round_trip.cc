// Decoding what ServerEncoding made gives back the text it started from, and
// every decoder of this build and processor gives the same bytes as the
// byte-wise one on any text.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "input/url_decoding.h"
#include "kx_input.h"

namespace {

// The input taken as URL text as it stands, escapes good and bad.
void CompareDecoders(const std::string &text) {
    static const std::vector<kx::input::UrlDecoder> decoders = kx::input::AvailableDecoders();
    const size_t size = std::strlen(text.c_str());
    // Exactly the room the decoders are promised, so that ASan sees a write past it.
    const auto expected = std::make_unique<char[]>(size), got = std::make_unique<char[]>(size);
    const size_t n = kx::input::DecodeByteWise(text.c_str(), size, expected.get());
    for (const kx::input::UrlDecoder decode : decoders)
        if (decode(text.c_str(), size, got.get()) != n || std::memcmp(expected.get(), got.get(), n) != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    const int blank = data[0] & 1;
    const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
    CompareDecoders(text);
    int length = -1;
    char *encoded = ServerEncoding(text.c_str(), &length, blank, 0);
    if (length != static_cast<int>(std::strlen(encoded))) std::abort();
    char *decoded = ServerDecoding(encoded);
    if (std::strcmp(decoded, text.c_str()) != 0) std::abort();
    std::free(encoded);
    std::free(decoded);
    return 0;
}
