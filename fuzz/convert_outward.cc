// The file and program conversions over any argument and value, and the
// host name conversion's options, run inside a scratch tree that holds a
// link to a folder outside it. Input: one selector byte (which conversion;
// its high bit: a null value), the argument, NUL, the value. The tree holds
// no program, so a call never runs one; "_hostname" always looks up
// 127.0.0.1, so nothing but loopback is ever asked. After every input the
// file outside must be as it was and the outside folder must hold nothing
// else; the tree is then laid out afresh.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "fuzz_input.h"
#include "kx_convert.h"

namespace {

namespace fs = std::filesystem;

constexpr KonvertierungsFunktion kHandlers[] = {
    ConvertFileExists, ConvertFileRegexpExists, ConvertFileRemove, ConvertCreateDir,
    ConvertCreateFile, ConvertCreateTemplateFile, ConvertListDir,  ConvertRenameFile,
    ConvertFileCopy,   ConvertWriteFile,        ConvertToIniRead,  ConvertByCall,
    ConvertByCallBasic, ConvertToHostname,
};
// Positions in kHandlers of the rows that get a value of their own.
constexpr std::size_t kTemporaryRow = 5;
constexpr std::size_t kHostnameRow = 13;
constexpr char kKept[] = "keep";

fs::path scratch;

void LayOut() {
    for (const fs::directory_entry &entry : fs::directory_iterator(scratch / "tree")) fs::remove_all(entry.path());
    std::ofstream(scratch / "tree/a.txt") << "alpha";
    std::ofstream(scratch / "tree/net.ini") << "|\n[Net]\nHost=h\n";
    fs::create_directory(scratch / "tree/d");
    fs::create_directory_symlink(scratch / "outside", scratch / "tree/out");
}

bool OutsideUntouched() {
    std::ifstream file(scratch / "outside/secret.txt");
    std::stringstream text;
    text << file.rdbuf();
    return text.str() == kKept &&
           std::distance(fs::directory_iterator(scratch / "outside"), fs::directory_iterator{}) == 1;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    std::string pattern = (fs::temp_directory_path() / "kxfuzz.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) std::abort();
    scratch = pattern;
    fs::create_directory(scratch / "tree");
    fs::create_directory(scratch / "outside");
    std::ofstream(scratch / "outside/secret.txt") << kKept;
    fs::current_path(scratch / "tree");
    std::atexit([] { std::error_code ignored; fs::remove_all(scratch, ignored); });
    LayOut();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1) return 0;
    const std::size_t row = data[0] % std::size(kHandlers);
    const KonvertierungsFunktion handler = kHandlers[row];
    auto texts = kx::fuzz::Texts(data + 1, size - 1, 2);
    texts[1].resize(std::strlen(texts[1].c_str()));  // the value the handler sees
    std::string argument = texts[0];
    const std::string before = argument;
    if (row == kHostnameRow) texts[1] = "127.0.0.1|127.0.0.1|127.0.0.1";
    // Without a folder "_mktemp" would leave its files in the system's.
    const bool inTree = row == kTemporaryRow;
    if (inTree && texts[1].empty()) texts[1] = "d";
    char *value = (data[0] & 0x80) && !inTree ? nullptr : strdup(texts[1].c_str());
    char *result = handler(argument.data(), value, -1);
    if (result == nullptr || argument != before) std::abort();
    if (result != value) std::free(result);
    std::free(value);
    if (!OutsideUntouched()) std::abort();
    LayOut();
    return 0;
}
