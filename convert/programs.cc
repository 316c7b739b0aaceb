// Program call conversions: "_call," and "_callp," start another program of
// the console. Programs always start from an argument vector, never through
// a shell, and must lie inside the application's tree.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "convert/convert_internal.h"
#include "core/page_output.h"
#include "convert/paths.h"
#include "kx_profile.h"
#include "kx_convert.h"
#include "kx_input.h"

namespace kx::convert {
namespace {

// The most program arguments each handler passes after the program itself.
constexpr std::size_t kCallArguments = 9;
constexpr std::size_t kCallBasicArguments = 19;
constexpr char kQueryEnd[] = "&ParameterList=DeleteCopyright--y";

struct CallStyle {
    bool byBaseName;          // "_call," compares and completes the base name
    std::size_t maxArguments;
};

const KnownFunction *FindKnown(const char *program) {
    for (int i = 0; i < KnownFunctionsCount; ++i) {
        const KnownFunction &row = KnownFunctions[i];
        if (std::strncmp(program, row.name, static_cast<std::size_t>(row.length)) == 0) return &row;
    }
    return nullptr;
}

void FlushPage() {
    kx::core::FlushPageOutput();
    std::fflush(stdout);
    if (_Utilsfpout != nullptr) std::fflush(_Utilsfpout);
}

// Runs program with args through KXUtilsStartProgram; -1 when refused.
int Run(const std::string &program, const std::vector<std::string> &args) {
    const std::optional<std::string> path = Confined(program);
    if (!path) return -1;
    std::vector<char *> vector{const_cast<char *>(path->c_str())};
    for (const std::string &arg : args) vector.push_back(const_cast<char *>(arg.c_str()));
    vector.push_back(nullptr);
    FlushPage();
    const int status = KXUtilsStartProgram("synchron", static_cast<int>(vector.size() - 1), vector.data(), 0);
    FlushPage();
    return status;
}

char *CallUnknown(std::string_view argument, const char *value, int cycleIndex, std::size_t maxArguments) {
    std::vector<std::string> args;
    if (!argument.empty())
        for (std::string_view element : Split(argument, ","))
            if (args.size() < maxArguments) args.push_back(Decoded(Evaluated(element, cycleIndex)));
    return PrintInt(Run(value, args));
}

// The value of the entry of that name for the query: its whole Wert when it
// has one, else its default; nothing for an entry the list does not hold.
std::string ParameterValue(const char *name) {
    if (_pEingabe == nullptr || _pEingabeAnzahl == nullptr || *_pEingabe == nullptr) return {};
    const int index = EingabewertIndex(name, *_pEingabe, *_pEingabeAnzahl);
    if (index >= *_pEingabeAnzahl) return {};
    const EingabeElement &entry = (*_pEingabe)[index];
    if (entry.Wert != nullptr && *entry.Wert != '\0') return entry.Wert;
    return entry.Vorgabe != nullptr ? entry.Vorgabe : "";
}

std::string Query(const KnownFunction &row, std::string_view head, int cycleIndex) {
    std::string query;
    for (int i = 0; i < *row.parameterCount; ++i) {
        if (i > 0) query += '&';
        query.append(row.parameters[i]).append("=").append(ParameterValue(row.parameters[i]));
    }
    query.append(row.extra).append(Decoded(Evaluated(head, cycleIndex))).append(kQueryEnd);
    return query;
}

// A temporary file that is deleted when it goes out of scope.
struct TemporaryFile {
    char *name;
    explicit TemporaryFile(const char *directory) : name(KXUtilsTempFileName(directory)) {}
    ~TemporaryFile() {
        if (name != nullptr) KXUtilsDeleteFile(name);
        KXUtilsFreeResources(name);
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
};

// Hands the query to the program in a file and reads its answer from another:
// the answer when it exits with 0, else nullopt.
std::optional<std::string> Exchange(const std::string &program, const std::string &query) {
    char *directory = KXUtilsTempDirectory(nullptr);
    const TemporaryFile input(directory), output(directory);
    KXUtilsFreeResources(directory);
    if (input.name == nullptr || output.name == nullptr) return std::nullopt;
    if (KXUtilsWriteMemoryToFile2(input.name, query.c_str(), 0) < 0) return std::nullopt;
    if (Run(program, {input.name, output.name}) != 0) return std::nullopt;
    int length = 0;
    char *answer = UtilsReadFile(output.name, &length, nullptr, 0);
    std::string text = answer != nullptr ? std::string(answer, static_cast<std::size_t>(length)) : "";
    std::free(answer);
    return text;
}

char *CallKnown(const KnownFunction &row, std::string_view argument, const char *value, int cycleIndex,
                bool completePath) {
    const Cut parts = CutAt(argument, ',');
    std::string program = value;
    if (completePath && program.front() != '.' && program.front() != '/') program.insert(0, "./");
    const std::optional<std::string> answer = Exchange(program, Query(row, parts.head, cycleIndex));
    if (answer) return HeapCopy(*answer);
    return HeapCopy(parts.hasRest && !parts.rest.empty() ? parts.rest : std::string_view{value});
}

char *Call(char *argument, const char *value, int cycleIndex, CallStyle style) {
    if (value == nullptr || *value == '\0') return PrintInt(-1);
    const KnownFunction *row = FindKnown(style.byBaseName ? KXUtilsBasename(value, 0) : value);
    if (row == nullptr) return CallUnknown(ValueText(argument), value, cycleIndex, style.maxArguments);
    return CallKnown(*row, ValueText(argument), value, cycleIndex, style.byBaseName);
}

template <std::size_t N>
constexpr KnownFunction Known(const char (&name)[N], const char *extra) {
    return {static_cast<int>(N - 1), name, &DBAsciiAccessParametersCount, DBAsciiAccessParameters, extra};
}

}  // namespace
}  // namespace kx::convert

using kx::convert::Known;

extern "C" {

const char *const DBAsciiAccessParameters[] = {
    "SSL", "Server", "CGIDirectory", "RootDirectory", "CGIPath",
    "RootPath", "AppSuffix", "Application", "Extension", "UserID",
};
const int DBAsciiAccessParametersCount = sizeof DBAsciiAccessParameters / sizeof DBAsciiAccessParameters[0];

const KnownFunction KnownFunctions[] = {
    Known("DBAsciiAccess", "&Submit=Submit&ApplicationToCall=DBAsciiAccess&Profile=&DBAccess=ASCII&Viewing=-1"
                           "&Action=Show&DBValue=&UserValue="),
    Known("SnmpListMibValues", "&Groups=CHECKED&Tables=CHECKED&Submit.x=38"),
    Known("SnmpGetMibValues", "&Groups=CHECKED&Tables=CHECKED&Submit.x=38"),
    Known("SnmpGetTrapValues", ""),
    Known("SnmpListTrapValues", ""),
    Known("PeerScal", ""),
    Known("PeerScat", "&SendSubmit=Submit"),
    Known("PeerScaf", ""),
    Known("PeerScan", ""),
};
const int KnownFunctionsCount = sizeof KnownFunctions / sizeof KnownFunctions[0];

char *ConvertByCall(char *argument, char *value, int cycleIndex) {
    return kx::convert::Call(argument, value, cycleIndex, {true, kx::convert::kCallArguments});
}

char *ConvertByCallBasic(char *argument, char *value, int cycleIndex) {
    return kx::convert::Call(argument, value, cycleIndex, {false, kx::convert::kCallBasicArguments});
}

}  // extern "C"

static_assert(sizeof DBAsciiAccessParameters / sizeof DBAsciiAccessParameters[0] == 10);
static_assert(sizeof KnownFunctions / sizeof KnownFunctions[0] == 9);
