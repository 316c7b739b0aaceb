// Helpers shared by the test programs.
#ifndef KX_TESTS_SUPPORT_KX_TEST_H
#define KX_TESTS_SUPPORT_KX_TEST_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/text.h"
#include "kx_convert.h"
#include "kx_input.h"

namespace kx::test {

// The texts laid end to end, each followed by its NUL (request texts, value
// lists, in-memory definitions).
std::string Terminated(const std::vector<std::string_view> &texts);

// The whole content of a file; empty when it cannot be read.
std::string ReadFile(const std::string &path);

// The rows of a table file under tests/data: one row per line, its fields
// separated by tabs; blank lines and lines starting with "#" are skipped. In a
// field "<null>" is no text and "" the empty text; "\n", "\t", "\\", "\xNN"
// and "\(N*c)" (the character c N times) are escapes.
using DataRow = std::vector<std::optional<std::string>>;
std::vector<DataRow> DataTable(const std::string &name);

// The entries of a list, one per line: name, kind and default (or <null>)
// separated by "|", then "=" and each value in brackets when there are
// values, and "@" and the position when it is not 0. A name length that
// disagrees with the name is shown as "!length".
std::string Describe(const EingabeElement *list, int count);

// The handler's result for a writable copy of argument and for value (NULL
// when value is NULL); "<null>" for a null result. Argument and value must
// come back as they went in, and a handler's own text is freed.
std::string Convert(KonvertierungsFunktion handler, const std::string &argument, const char *value,
                    int cycleIndex = -1);

// One handler call and the text it must give.
struct HandlerCase {
    KonvertierungsFunktion handler;
    std::string argument;
    const char *value;
    std::string result;
};
void ExpectAll(const std::vector<HandlerCase> &cases);

// A heap text returned by the library, freed when it goes out of scope;
// str() shows a null text as "<null>".
struct HeapText : core::HeapText {
    using core::HeapText::HeapText;
    const char *get() const { return Get(); }
    std::string str() const { return Get() ? std::string(Get()) : std::string("<null>"); }
};

// A temporary directory, removed with everything in it.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;
    const std::string &path() const { return path_; }
    // Writes content to path/relative, creating the folders on the way.
    std::string Write(const std::string &relative, const std::string &content) const;

private:
    std::string path_;
};

// Makes directory the current one; the old one comes back at the end.
class CurrentDirectory {
public:
    explicit CurrentDirectory(const std::filesystem::path &directory);
    ~CurrentDirectory();
    CurrentDirectory(const CurrentDirectory &) = delete;
    CurrentDirectory &operator=(const CurrentDirectory &) = delete;

private:
    std::filesystem::path previous_;
};

// A pipe on file descriptor 0; the old standard input comes back at the end.
class StandardInputPipe {
public:
    StandardInputPipe();
    ~StandardInputPipe();
    StandardInputPipe(const StandardInputPipe &) = delete;
    StandardInputPipe &operator=(const StandardInputPipe &) = delete;
    // Writes data (at most what the pipe holds) and keeps the writing end open.
    void Write(std::string_view data);
    // Writes data and closes the writing end.
    void WriteAndClose(std::string_view data);

private:
    int saved_;
    int writer_ = -1;
};

// An input list built by a test, with every text freed at the end. The
// process-wide handles are cleared when they point at it.
class InputList {
public:
    InputList() = default;
    ~InputList() { Clear(); }
    InputList(const InputList &) = delete;
    InputList &operator=(const InputList &) = delete;
    EingabeElement *&list() { return list_; }
    int &count() { return count_; }
    EingabeElement &operator[](int i) { return list_[i]; }
    // Adds an entry as a definition line would declare it (no value yet).
    void Add(const char *name, char kind = 'n', const char *defaultText = nullptr);
    // The values of the entry name, each in brackets; "<no entry>" without one.
    std::string ValuesOf(const char *name) const;
    // Gives entry i the values, laid end to end as a list entry holds them,
    // the first one current.
    void SetValues(int i, std::initializer_list<std::string_view> values);
    void Clear();

private:
    EingabeElement *list_ = nullptr;
    int count_ = 0;
};

// Frees the record of the definition files read (_IniFilename).
void ForgetDefinitionFiles();

// The keyword index globals, the list handles and the record of definition
// files outlive each test: a test built on this starts with every keyword
// unset and no file recorded, and leaves no handle and no record behind.
class FreshGlobals : public ::testing::Test {
protected:
    void SetUp() override {
        for (int row = 0; row < SchluesselworteAnzahl; ++row) *Schluesselworte[row].Index = -1;
        ForgetDefinitionFiles();
    }
    void TearDown() override {
        _pEingabe = nullptr;
        _pEingabeAnzahl = nullptr;
        ForgetDefinitionFiles();
    }
};

// A test that runs in a temporary directory of its own (the current one while
// it lasts) on a list of its own, starting with every keyword unset.
class InTempDir : public FreshGlobals {
protected:
    void Set(const char *name, const char *text) { SetEingabeWert(in_.count(), in_.list(), name, text); }
    TempDir dir_;
    CurrentDirectory inside_{dir_.path()};
    InputList in_;
};

// Collects what the library writes to its page stream while it lives.
class CapturedPage {
public:
    CapturedPage() : saved_(_Utilsfpout), stream_(open_memstream(&data_, &size_)) { _Utilsfpout = stream_; }
    ~CapturedPage() {
        Text();
        std::free(data_);
    }
    CapturedPage(const CapturedPage &) = delete;
    CapturedPage &operator=(const CapturedPage &) = delete;
    // Everything written so far; stops the capture.
    std::string Text() {
        if (stream_ != nullptr) {
            std::fclose(stream_);
            stream_ = nullptr;
            _Utilsfpout = saved_;
        }
        return std::string(data_ ? data_ : "", size_);
    }

private:
    FILE *saved_;
    char *data_ = nullptr;
    size_t size_ = 0;
    FILE *stream_;
};

}  // namespace kx::test

#endif
