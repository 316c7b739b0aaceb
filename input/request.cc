// Services around the request text: finding a key's value in a query,
// reading posted data, and cutting a range of elements out of a text.
#include <fcntl.h>
#include <sys/select.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "core/alloc.h"
#include "input/request_internal.h"

namespace kx::request {
namespace {

// "&" + key + assign must fit a buffer of this many bytes.
constexpr std::size_t kKeyBufferSize = 256;
constexpr const char *kDefaultKey = "Application";
constexpr const char *kDefaultAssign = "=";

constexpr std::size_t kDefaultPostedSize = 2048;
constexpr long kPostedWaitSeconds = 5;
// The length is reported as an int: posted data beyond this is not read.
constexpr std::size_t kMaxPostedLength = INT_MAX - 1;

const char *KeyValue(const char *query, const char *key, const char *assign) {
    const std::string pattern = std::string("&").append(key).append(assign);
    if (pattern.size() >= kKeyBufferSize) return nullptr;
    if (const char *hit = std::strstr(query, pattern.c_str())) return hit + pattern.size();
    const std::string_view atStart = std::string_view(pattern).substr(1);
    return std::string_view(query).starts_with(atStart) ? query + atStart.size() : nullptr;
}

using Clock = std::chrono::steady_clock;

// Waits until fd is readable; false when the deadline passed first (or the
// wait was interrupted).
bool ReadableBefore(int fd, Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    timeval wait{static_cast<time_t>(left / 1'000'000), static_cast<suseconds_t>(left % 1'000'000)};
    return select(fd + 1, &readable, nullptr, nullptr, &wait) > 0;
}

// Bytes of a stream, each waited for until one deadline for the whole read:
// a client that sends a first byte and then falls silent cannot hold the
// program. The stream's descriptor reads without blocking meanwhile; a
// stream without a descriptor (in memory) never blocks anyway.
class TimedReader {
public:
    TimedReader(std::FILE *stream, Clock::time_point deadline)
        : stream_(stream), fd_(fileno(stream)), deadline_(deadline) {
        flags_ = fd_ >= 0 ? fcntl(fd_, F_GETFL) : -1;
        if (flags_ >= 0) fcntl(fd_, F_SETFL, flags_ | O_NONBLOCK);
    }
    ~TimedReader() {
        if (flags_ >= 0) fcntl(fd_, F_SETFL, flags_);
    }
    TimedReader(const TimedReader &) = delete;
    TimedReader &operator=(const TimedReader &) = delete;

    // The next byte; EOF at the end of the input or when time ran out.
    int Next() {
        for (;;) {
            std::clearerr(stream_);
            const int ch = std::fgetc(stream_);
            if (ch != EOF || !std::ferror(stream_) || (errno != EAGAIN && errno != EWOULDBLOCK)) return ch;
            if (!ReadableBefore(fd_, deadline_)) {
                timedOut_ = true;
                return EOF;
            }
        }
    }
    bool TimedOut() const { return timedOut_; }

private:
    std::FILE *stream_;
    int fd_;
    int flags_ = -1;
    Clock::time_point deadline_;
    bool timedOut_ = false;
};

// Reads the rest of the input after its first byte; the buffer grows by step
// bytes whenever only the place for the NUL is left. Null when memory runs out.
char *ReadAll(TimedReader &reader, int firstByte, std::size_t step, std::size_t &length) {
    std::size_t size = step;
    auto *buffer = static_cast<char *>(kx::core::Allocate(size));
    length = 0;
    for (int ch = firstByte; buffer != nullptr && ch != EOF; ch = reader.Next()) {
        if (length == size - 1) {
            size = std::min(size + step, kMaxPostedLength + 1);
            auto *grown = static_cast<char *>(kx::core::Reallocate(buffer, size));
            if (grown == nullptr) std::free(buffer);
            buffer = grown;
            if (buffer == nullptr) break;
        }
        buffer[length++] = static_cast<char>(ch);
        if (length == kMaxPostedLength) break;
    }
    if (buffer != nullptr) buffer[length] = '\0';
    return buffer;
}

// The wait of kPostedWaitSeconds covers the whole read, not only the first
// byte: input that stops coming before its end gives null, as none at all.
char *PostedInformation(int initialSize, std::FILE *stream, int *length) {
    if (stream == nullptr) stream = stdin;
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(kPostedWaitSeconds);
    if (!ReadableBefore(0, deadline)) return nullptr;
    TimedReader reader(stream, deadline);
    const int firstByte = reader.Next();
    if (firstByte == EOF && !reader.TimedOut()) {
        if (length != nullptr) *length = 0;
        return nullptr;
    }
    if (firstByte == EOF) return nullptr;
    const std::size_t step = initialSize > 0 ? static_cast<std::size_t>(initialSize) : kDefaultPostedSize;
    std::size_t read = 0;
    char *buffer = ReadAll(reader, firstByte, step, read);
    if (buffer != nullptr && reader.TimedOut()) {
        std::free(buffer);
        return nullptr;
    }
    if (buffer != nullptr && length != nullptr) *length = static_cast<int>(read);
    return buffer;
}

// The bytes of elements first .. first + number - 1 (number <= 0: to the
// end), or nothing when element first is not there.
std::optional<std::string_view> ElementRange(std::string_view text, std::string_view separator,
                                             long long first, long long number) {
    const long long last = number > 0 ? first + number : -1;
    std::size_t start = text.npos;
    std::size_t position = 0;
    for (long long element = 1;; ++element) {
        if (element == first) start = position;
        // With a one-byte separator the range ends without it.
        if (element == last) return text.substr(start, position - 1 - start);
        const std::size_t hit = text.find(separator, position);
        if (hit == text.npos) break;
        position = hit + separator.size();
    }
    if (start == text.npos) return std::nullopt;
    return text.substr(start);
}

char *CreateOutput(char *text, const char *separator, int first, int number) {
    if (text == nullptr || separator == nullptr || *separator == '\0') return text;
    if (first <= 1 && number <= 0) return text;
    const auto range = ElementRange(text, separator, std::max(first, 1), number);
    if (!range) return text;
    char *result = HeapCopy(*range);
    if (result == nullptr) return text;
    std::free(text);
    return result;
}

}  // namespace
}  // namespace kx::request

extern "C" {

char *PositioniereAufSchluesselwortWert(const char *query, const char *key, const char *assign) {
    if (query == nullptr) return nullptr;
    const char *value = kx::request::KeyValue(query, key != nullptr ? key : kx::request::kDefaultKey,
                                              assign != nullptr ? assign : kx::request::kDefaultAssign);
    return const_cast<char *>(value);
}

char *UtilsGetPostedInformation(int initialSize, FILE *stream, int *length) {
    return kx::request::PostedInformation(initialSize, stream, length);
}

char *UtilsCreateOuput(char *text, const char *separator, int first, int number) {
    return kx::request::CreateOutput(text, separator, first, number);
}

}  // extern "C"
