#include "support/kx_test.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

// net-snmp loses its table of textual conventions when it drops the MIBs of
// one directory for another; that is its allocation, not ours.
extern "C" const char *__lsan_default_suppressions() { return "leak:netsnmp_init_mib_internals\n"; }

namespace kx::test {

std::string Terminated(const std::vector<std::string_view> &texts) {
    std::string block;
    for (std::string_view text : texts) block.append(text).push_back('\0');
    return block;
}

std::string ReadFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

namespace {

std::optional<std::string> Field(std::string_view field) {
    if (field == "<null>") return std::nullopt;
    if (field == "\"\"") return "";
    std::string text;
    for (size_t at = 0; at < field.size(); ++at) {
        if (field[at] != '\\' || at + 1 == field.size()) {
            text += field[at];
        } else if (field[++at] == 'x') {
            text += static_cast<char>(std::stoi(std::string(field.substr(at + 1, 2)), nullptr, 16));
            at += 2;
        } else if (field[at] == '(') {
            const size_t star = field.find('*', at);
            text.append(std::stoul(std::string(field.substr(at + 1, star - at - 1))), field[star + 1]);
            at = star + 2;
        } else {
            text += field[at] == 'n' ? '\n' : field[at] == 't' ? '\t' : field[at];
        }
    }
    return text;
}

}  // namespace

std::vector<DataRow> DataTable(const std::string &name) {
    std::istringstream lines(ReadFile(std::string(KX_SOURCE_DIR) + "/tests/data/" + name));
    std::vector<DataRow> rows;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') continue;
        rows.emplace_back();
        for (std::string_view field : core::Split(line, "\t")) rows.back().push_back(Field(field));
    }
    EXPECT_FALSE(rows.empty()) << name;
    return rows;
}

void ForgetDefinitionFiles() {
    for (int slot = 0; slot < 2; ++slot) {
        std::free(_IniFilename[slot]);
        _IniFilename[slot] = nullptr;
        _IniFilenameDivideSign[slot] = '\0';
    }
}

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kxtest.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::Write(const std::string &relative, const std::string &content) const {
    const std::filesystem::path file = std::filesystem::path(path_) / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file.string();
}

CurrentDirectory::CurrentDirectory(const std::filesystem::path &directory)
    : previous_(std::filesystem::current_path()) {
    std::filesystem::current_path(directory);
}

CurrentDirectory::~CurrentDirectory() { std::filesystem::current_path(previous_); }

StandardInputPipe::StandardInputPipe() : saved_(dup(0)) {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    dup2(ends[0], 0);
    close(ends[0]);
    writer_ = ends[1];
    clearerr(stdin);
}

StandardInputPipe::~StandardInputPipe() {
    if (writer_ >= 0) close(writer_);
    dup2(saved_, 0);
    close(saved_);
    clearerr(stdin);
}

void StandardInputPipe::Write(std::string_view data) {
    while (!data.empty()) {
        const ssize_t written = write(writer_, data.data(), data.size());
        if (written <= 0) std::abort();
        data.remove_prefix(static_cast<size_t>(written));
    }
}

void StandardInputPipe::WriteAndClose(std::string_view data) {
    Write(data);
    close(writer_);
    writer_ = -1;
}

void InputList::Add(const char *name, char kind, const char *defaultText) {
    list_ = static_cast<EingabeElement *>(std::realloc(list_, sizeof(EingabeElement) * static_cast<size_t>(count_ + 1)));
    list_[count_] = EingabeElement{strdup(name), static_cast<uint32_t>(strlen(name)), nullptr, 0, 0,
                                   kind, defaultText ? strdup(defaultText) : nullptr};
    ++count_;
}

std::string Describe(const EingabeElement *list, int count) {
    std::string out;
    for (int i = 0; i < count; ++i) {
        const EingabeElement &e = list[i];
        out.append(e.Name ? e.Name : "<null>").append("|").push_back(e.Art);
        out.append("|").append(e.Vorgabe ? e.Vorgabe : "<null>");
        if (e.Name && e.NameLaenge != strlen(e.Name)) out.append("!" + std::to_string(e.NameLaenge));
        const char *value = e.Wert;
        for (int v = 0; value != nullptr && v < e.WertGesetzt; ++v, value += strlen(value) + 1)
            out.append(v == 0 ? "=[" : "[").append(value).append("]");
        if (e.WertPosition != 0) out.append("@" + std::to_string(e.WertPosition));
        out.push_back('\n');
    }
    return out;
}

std::string InputList::ValuesOf(const char *name) const {
    const int i = EingabewertIndex(name, list_, count_);
    if (i >= count_) return "<no entry>";
    const std::string line = Describe(list_ + i, 1);
    const size_t start = line.find("=[");
    return start == std::string::npos ? "" : line.substr(start + 1, line.rfind(']') - start);
}

void InputList::SetValues(int i, std::initializer_list<std::string_view> values) {
    const std::string block = Terminated(values);
    std::free(list_[i].Wert);
    list_[i].Wert = static_cast<char *>(std::malloc(block.size() + 1));
    std::memcpy(list_[i].Wert, block.data(), block.size());
    list_[i].Wert[block.size()] = '\0';
    list_[i].WertGesetzt = static_cast<int32_t>(values.size());
    list_[i].WertPosition = 0;
}

void InputList::Clear() {
    for (int i = 0; i < count_; ++i) {
        std::free(list_[i].Name);
        std::free(list_[i].Wert);
        std::free(list_[i].Vorgabe);
    }
    std::free(list_);
    if (_pEingabe == &list_) {
        _pEingabe = nullptr;
        _pEingabeAnzahl = nullptr;
    }
    list_ = nullptr;
    count_ = 0;
}

std::string Convert(KonvertierungsFunktion handler, const std::string &argument, const char *value, int cycleIndex) {
    std::string writable = argument, valueCopy = value ? value : "";
    char *passed = value ? valueCopy.data() : nullptr;
    char *result = handler(writable.data(), passed, cycleIndex);
    EXPECT_EQ(writable, argument) << "the argument is left as it was";
    if (value != nullptr) EXPECT_EQ(valueCopy, value) << "the value is left as it was";
    std::string printed = result ? result : "<null>";
    if (result != passed) std::free(result);
    return printed;
}

void ExpectAll(const std::vector<HandlerCase> &cases) {
    for (const HandlerCase &c : cases)
        EXPECT_EQ(Convert(c.handler, c.argument, c.value), c.result)
            << "argument \"" << c.argument << "\" value \"" << (c.value ? c.value : "<null>") << '"';
}

}  // namespace kx::test
