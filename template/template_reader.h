// Reading a template file: the line buffer grows on demand, and the file is
// read in blocks from which lines are taken with memchr. A run of whole lines
// with no byte that could open a placeholder is handed on in one piece.
#ifndef KX_TEMPLATE_TEMPLATE_READER_H
#define KX_TEMPLATE_TEMPLATE_READER_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string_view>

namespace kx::tmpl {

// The bytes of one logical line. Its contents past what was read are
// undefined (never cleared): every read ends its text with a NUL.
class LineBuffer {
public:
    char *data() { return bytes_.get(); }
    const char *data() const { return bytes_.get(); }
    size_t size() const { return size_; }
    char &operator[](size_t i) { return bytes_[i]; }
    // At least n bytes, the contents kept; grows at least twofold.
    void Reserve(size_t n);

private:
    std::unique_ptr<char[]> bytes_;
    size_t size_ = 0;
};

// The template file is read this many bytes at a time.
inline constexpr size_t kReadBlockSize = 64 * 1024;
// A line that a block's end cuts is carried in front of the next block when
// it is no longer than this, so that plain lines flow on across blocks.
inline constexpr size_t kCarryRoom = 4096;

// The whole lines at the start of a text that come before its first stop
// byte: their bytes (up to and including the last line feed before the stop)
// and their line feeds.
struct PlainLines {
    size_t length = 0;
    size_t feeds = 0;
    size_t stop = 0;  // where the first stop byte or the NUL stands
};

// Scans text, which ends with a NUL, for its first byte stop, otherStop or
// NUL. A scanner may read up to kScanPadding bytes past that NUL.
using PlainScanner = PlainLines (*)(const char *text, char stop, char otherStop);
inline constexpr size_t kScanPadding = 128;

// One pass of the C library's searches and a count of the feeds.
PlainLines ScanPlainByteWise(const char *text, char stop, char otherStop);

// On x86: one pass of vectors that finds the stop and counts the feeds before
// it together, sixteen bytes a vector with SSE2, thirty-two with AVX2. Null
// where the build or the processor has none.
PlainScanner Sse2Scanner();
PlainScanner Avx2Scanner();

// The widest scanner the processor has.
PlainScanner ChosenScanner();

class TemplateReader {
public:
    // size: the file's size when known (else 0 or below); a smaller file
    // is read in blocks just large enough to hold it, so that a small page
    // takes no block-sized buffer.
    TemplateReader(std::FILE *in, long size);
    std::FILE *Stream() const { return in_; }
    // Puts the next physical line, its line feed included, at `at` in line
    // (grown to hold it) followed by a NUL. False at the end of the file.
    bool ReadLine(LineBuffer &line, size_t at);
    // Takes the whole lines from here on that hold neither stop nor a NUL;
    // *lines is their number. Empty when the next line holds one, or is not
    // read whole yet.
    std::string_view TakePlainLines(char stop, char otherStop, int *lines);

private:
    bool Fill();
    bool Carry();

    std::FILE *in_;
    PlainScanner scan_;
    size_t blockSize_;
    // kCarryRoom bytes, a block, its NUL and kScanPadding bytes; pos_ and
    // end_ count from its start.
    std::unique_ptr<char[]> block_;
    size_t pos_ = 0;
    size_t end_ = 0;
    bool eof_ = false;
};

}  // namespace kx::tmpl

#endif
