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

class TemplateReader {
public:
    explicit TemplateReader(std::FILE *in);
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

    std::FILE *in_;
    std::unique_ptr<char[]> block_;
    size_t pos_ = 0;
    size_t end_ = 0;
    bool eof_ = false;
};

}  // namespace kx::tmpl

#endif
