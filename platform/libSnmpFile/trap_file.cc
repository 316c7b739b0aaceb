// Trap files: a header line, one line per variable (OID, type and value
// separated by tabs, bytes outside printable ASCII and "%" written as %XX),
// and an end line, so that a truncated file is told from a whole one.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companion/libSnmpFile.h"
#include "records.h"
#include "platform/percent_escape.h"

namespace snmpfile {
namespace {

using kx::platform::Unescape;

constexpr std::string_view kHeader = "KXSNMPTRAP 1";
constexpr std::string_view kEnd = "END";
constexpr char kHex[] = "0123456789ABCDEF";
constexpr mode_t kFileMode = 0644;

bool NeedsEscape(unsigned char c) { return c < 0x20 || c >= 0x7F || c == '%'; }

void AppendEscaped(std::string &out, std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (!NeedsEscape(byte)) {
            out += c;
            continue;
        }
        out += '%';
        out += kHex[byte >> 4];
        out += kHex[byte & 0xF];
    }
}

std::optional<Record> ParseRecordLine(std::string_view line) {
    const std::size_t first = line.find('\t');
    const std::size_t second = first == std::string_view::npos ? first : line.find('\t', first + 1);
    if (second == std::string_view::npos || line.find('\t', second + 1) != std::string_view::npos)
        return std::nullopt;
    auto oid = Unescape(line.substr(0, first));
    auto type = Unescape(line.substr(first + 1, second - first - 1));
    auto value = Unescape(line.substr(second + 1));
    if (!oid || !type || !value) return std::nullopt;
    return Record{std::move(*oid), std::move(*type), std::move(*value)};
}

// The next line without its end ("\n", or "\r\n" from an editor); nothing
// when the text has no further complete line.
std::optional<std::string_view> NextLine(std::string_view &text) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

// The records of a trap file's text; nothing when it is not a whole one.
std::optional<std::vector<Record>> ParseTrapText(std::string_view text) {
    const std::optional<std::string_view> header = NextLine(text);
    if (!header || *header != kHeader) return std::nullopt;
    std::vector<Record> records;
    while (const std::optional<std::string_view> line = NextLine(text)) {
        if (line->empty() || line->front() == '#') continue;
        if (*line == kEnd) return text.empty() ? std::optional(std::move(records)) : std::nullopt;
        std::optional<Record> record = ParseRecordLine(*line);
        if (!record) return std::nullopt;
        records.push_back(std::move(*record));
    }
    return std::nullopt;  // no end line: the file was cut short
}

// A record block: the value lengths, the count, then the records (what the
// caller holds) and their texts, all in one malloc block.
std::size_t HeaderWords(std::size_t count) { return count + 1; }

char *PutText(char *at, std::string_view text) {
    if (!text.empty()) std::memcpy(at, text.data(), text.size());
    at[text.size()] = '\0';
    return at;
}

}  // namespace

KXSnmpVar *BuildBlock(const std::vector<Record> &records) {
    const std::size_t count = records.size();
    std::size_t texts = 0;
    for (const Record &r : records) texts += r.oid.size() + r.type.size() + r.value.size() + 3;
    const std::size_t header = HeaderWords(count) * sizeof(std::size_t);
    char *block = static_cast<char *>(std::malloc(header + count * sizeof(KXSnmpVar) + texts));
    if (block == nullptr) return nullptr;
    auto *words = reinterpret_cast<std::size_t *>(block);
    auto *vars = reinterpret_cast<KXSnmpVar *>(block + header);
    char *text = reinterpret_cast<char *>(vars + count);
    words[count] = count;
    for (std::size_t i = 0; i < count; ++i) {
        words[i] = records[i].value.size();
        vars[i].Oid = PutText(text, records[i].oid);
        text += records[i].oid.size() + 1;
        vars[i].Type = PutText(text, records[i].type);
        text += records[i].type.size() + 1;
        vars[i].Value = PutText(text, records[i].value);
        text += records[i].value.size() + 1;
    }
    return vars;
}

namespace {

std::size_t BlockCount(const KXSnmpVar *records) { return reinterpret_cast<const std::size_t *>(records)[-1]; }

const std::size_t *BlockWords(const KXSnmpVar *records) {
    return reinterpret_cast<const std::size_t *>(records) - HeaderWords(BlockCount(records));
}

int ReadText(std::string_view text, KXSnmpVar **records) {
    *records = nullptr;
    const std::optional<std::vector<Record>> parsed = ParseTrapText(text);
    if (!parsed) return KX_SNMPFILE_NOT_A_TRAP;
    if (parsed->size() > INT_MAX) return KX_SNMPFILE_NOT_A_TRAP;
    if (parsed->empty()) return KX_SNMPFILE_EMPTY;
    *records = BuildBlock(*parsed);
    return *records != nullptr ? static_cast<int>(parsed->size()) : KX_SNMPFILE_NO_MEMORY;
}

// The rest of a descriptor's contents; nothing on a read error.
std::optional<std::string> ReadDescriptor(int fd) {
    std::string contents;
    char buffer[65536];
    for (;;) {
        const ssize_t got = read(fd, buffer, sizeof buffer);
        if (got == 0) return contents;
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::nullopt;
        contents.append(buffer, static_cast<std::size_t>(got));
    }
}

std::string FormatText(const KXSnmpVar *records, const size_t *valueLengths, std::size_t count) {
    std::string out(kHeader);
    out += '\n';
    const auto field = [](const char *text) { return text != nullptr ? std::string_view(text) : std::string_view{}; };
    for (std::size_t i = 0; i < count; ++i) {
        AppendEscaped(out, field(records[i].Oid));
        out += '\t';
        AppendEscaped(out, field(records[i].Type));
        out += '\t';
        const char *value = records[i].Value;
        if (value != nullptr && valueLengths != nullptr)
            AppendEscaped(out, std::string_view(value, valueLengths[i]));
        else
            AppendEscaped(out, field(value));
        out += '\n';
    }
    out += kEnd;
    out += '\n';
    return out;
}

bool WriteAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Writes text to a hidden temporary file beside path and renames it to path:
// a reader sees the old file or the whole new one.
bool ReplaceFile(const std::string &path, std::string_view text) {
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string temporary = directory + "." + name + ".XXXXXX";
    const int fd = mkstemp(temporary.data());
    if (fd < 0) return false;
    // Readable by the console's programs, which may run as another user.
    const bool written = fchmod(fd, kFileMode) == 0 && WriteAll(fd, text) && fsync(fd) == 0;
    const bool closed = close(fd) == 0;
    if (written && closed && rename(temporary.c_str(), path.c_str()) == 0) return true;
    unlink(temporary.c_str());
    return false;
}

}  // namespace
}  // namespace snmpfile

extern "C" {

int KXSnmpFileReadText(const char *text, size_t length, KXSnmpVar **records) {
    if (records == nullptr) return KX_SNMPFILE_BAD_ARGUMENT;
    *records = nullptr;
    if (text == nullptr && length > 0) return KX_SNMPFILE_BAD_ARGUMENT;
    try {
        return snmpfile::ReadText(text != nullptr ? std::string_view(text, length) : std::string_view{}, records);
    } catch (const std::bad_alloc &) {
        return KX_SNMPFILE_NO_MEMORY;
    }
}

int KXSnmpFileRead(int fd, const char *path, KXSnmpVar **records, int /*flags*/) {
    if (records == nullptr) return KX_SNMPFILE_BAD_ARGUMENT;
    *records = nullptr;
    if (fd < 0 && path == nullptr) return KX_SNMPFILE_BAD_ARGUMENT;
    try {
        const int own = fd >= 0 ? fd : open(path, O_RDONLY | O_CLOEXEC);
        if (own < 0) return KX_SNMPFILE_UNREADABLE;
        const std::optional<std::string> contents = snmpfile::ReadDescriptor(own);
        if (own != fd) close(own);
        if (!contents) return KX_SNMPFILE_UNREADABLE;
        return snmpfile::ReadText(*contents, records);
    } catch (const std::bad_alloc &) {
        return KX_SNMPFILE_NO_MEMORY;
    }
}

size_t KXSnmpFileValueLength(const KXSnmpVar *records, int index) {
    if (records == nullptr || index < 0) return 0;
    const auto position = static_cast<std::size_t>(index);
    return position < snmpfile::BlockCount(records) ? snmpfile::BlockWords(records)[position] : 0;
}

char *KXSnmpFileFormatText(const KXSnmpVar *records, const size_t *valueLengths, int count, size_t *length) {
    if (length != nullptr) *length = 0;
    if (count < 0 || (records == nullptr && count > 0)) return nullptr;
    try {
        const std::string text = snmpfile::FormatText(records, valueLengths, static_cast<std::size_t>(count));
        char *copy = static_cast<char *>(std::malloc(text.size() + 1));
        if (copy == nullptr) return nullptr;
        std::memcpy(copy, text.c_str(), text.size() + 1);
        if (length != nullptr) *length = text.size();
        return copy;
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

int KXSnmpFileWrite(const char *path, const KXSnmpVar *records, const size_t *valueLengths, int count) {
    if (path == nullptr || count < 0 || (records == nullptr && count > 0)) return KX_SNMPFILE_BAD_ARGUMENT;
    try {
        const std::string text = snmpfile::FormatText(records, valueLengths, static_cast<std::size_t>(count));
        return snmpfile::ReplaceFile(path, text) ? 0 : KX_SNMPFILE_UNREADABLE;
    } catch (const std::bad_alloc &) {
        return KX_SNMPFILE_NO_MEMORY;
    }
}

void KXSnmpFileFreeResources(KXSnmpVar *records) {
    if (records == nullptr) return;
    std::free(const_cast<std::size_t *>(snmpfile::BlockWords(records)));
}

}  // extern "C"
