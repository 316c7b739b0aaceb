// ServerDecoding and ServerEncoding over 64 MiB of query text (and decoding
// over 64 MiB of escapes), against memcpy of the same number of bytes.
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kx_input.h"
#include "measure.h"

namespace {

constexpr size_t kVolume = 64u << 20;

// Query text as browsers send it: names, "+" for blanks, escaped separators.
std::string QueryText(size_t size) {
    static const char *const pieces[] = {"Application=Traps", "&Server=blade%2D07.lab", "&Filter=link+down",
                                         "&Path=%2Fvar%2Ftraps%2F", "&Ack=1", "&Note=CPU+load+%3E+90%25",
                                         "&Page=main.htm", "&Sel=a%7Cb%7Cc"};
    std::mt19937 random(7);
    std::string text;
    text.reserve(size + 64);
    while (text.size() < size) text += pieces[random() % (sizeof pieces / sizeof *pieces)];
    text.resize(size);
    return text;
}

// Runs operation over the whole volume in values of about 200 bytes, as a
// CGI program would over one request's parameters.
template <typename Operation>
void OverValues(const std::vector<std::string> &values, Operation &&operation) {
    for (const std::string &value : values) std::free(operation(value.c_str()));
}

// Text that is escapes only, as browsers send text outside the page's byte
// range (UTF-8 encoded Japanese): the case where a decoder that handles
// escapes one by one is slowest.
std::string EscapedText(size_t size) {
    std::string text;
    text.reserve(size + 16);
    while (text.size() < size) text += "%E3%81%82%E3%82%AB";
    text.resize(size);
    return text;
}

std::vector<std::string> Values(const std::string &text) {
    std::vector<std::string> values;
    for (size_t at = 0; at < text.size(); at += 200) values.push_back(text.substr(at, 200));
    return values;
}

}  // namespace

int main() {
    const std::string query = QueryText(kVolume);
    char *plainText = ServerDecoding(query.c_str());
    const std::string plain = plainText;
    std::free(plainText);
    std::vector<char> target(kVolume + 1);

    const double copy = kx::bench::BestSeconds([&] {
        std::memcpy(target.data(), query.data(), query.size());
        kx::bench::Keep(target.data());
    });
    const double copyPlain = kx::bench::BestSeconds([&] {
        std::memcpy(target.data(), plain.data(), plain.size());
        kx::bench::Keep(target.data());
    });
    const double wholeDecode = kx::bench::BestSeconds([&] { std::free(ServerDecoding(query.c_str())); });
    const std::string escaped = EscapedText(kVolume);
    const double escapedDecode = kx::bench::BestSeconds([&] { std::free(ServerDecoding(escaped.c_str())); });
    const double wholeEncode =
        kx::bench::BestSeconds([&] { std::free(ServerEncoding(plain.c_str(), nullptr, 0, 0)); });
    const auto encodedValues = Values(query), plainValues = Values(plain);
    const double valueDecode = kx::bench::BestSeconds(
        [&] { OverValues(encodedValues, [](const char *v) { return ServerDecoding(v); }); });
    const double valueEncode = kx::bench::BestSeconds(
        [&] { OverValues(plainValues, [](const char *v) { return ServerEncoding(v, nullptr, 0, 0); }); });
    // A heap copy of the same text: what any operation that hands back a new
    // text of this size pays at least (a fresh 64 MiB block is faulted in
    // page by page).
    auto heapCopy = [](const char *text) {
        char *copy = strdup(text);
        kx::bench::Keep(copy);
        return copy;
    };
    const double wholeCopy = kx::bench::BestSeconds([&] { std::free(heapCopy(query.c_str())); });
    const double valueCopy = kx::bench::BestSeconds([&] { OverValues(encodedValues, heapCopy); });

    std::printf("URL codec over %zu MiB of query text (best of 5)\n", kVolume >> 20);
    kx::bench::PrintRate("ServerDecoding, one text", static_cast<double>(query.size()), wholeDecode, "memcpy", copy);
    kx::bench::PrintRate("ServerEncoding, one text", static_cast<double>(plain.size()), wholeEncode, "memcpy", copyPlain);
    kx::bench::PrintRate("ServerDecoding, 200-byte values", static_cast<double>(query.size()), valueDecode, "memcpy", copy);
    kx::bench::PrintRate("ServerEncoding, 200-byte values", static_cast<double>(plain.size()), valueEncode, "memcpy", copyPlain);
    kx::bench::PrintRate("ServerDecoding, escapes only", static_cast<double>(escaped.size()), escapedDecode, "memcpy", copy);
    kx::bench::PrintRate("ServerDecoding, one text", static_cast<double>(query.size()), wholeDecode, "strdup", wholeCopy);
    kx::bench::PrintRate("ServerDecoding, 200-byte values", static_cast<double>(query.size()), valueDecode, "strdup", valueCopy);
    return 0;
}
