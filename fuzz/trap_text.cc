// Trap text: any summary format, argument characters and trap file. The
// input is the summary line, the arguments line, then the trap file; the
// arguments line also gives variable names (split at blanks) and the
// summary an unknown trap's enterprise. The text always ends inside its buffer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "companion/libSnmpFile.h"
#include "kx_trap.h"

namespace {

std::string Line(std::string &rest) {
    const std::size_t end = rest.find('\n');
    std::string line = rest.substr(0, end);
    rest = end == std::string::npos ? std::string() : rest.substr(end + 1);
    return line;
}

void Render(KXTrapDescription *d, int count, KXSnmpVar *records, KXTrapDescription *unknown) {
    char text[KX_TRAP_TEXT_SIZE + 1];
    text[0] = '\0';
    text[KX_TRAP_TEXT_SIZE] = 'X';
    GTCreateTrapString(text, nullptr, d, count, records, unknown);
    if (text[KX_TRAP_TEXT_SIZE] != 'X' || std::strlen(text) >= KX_TRAP_TEXT_SIZE) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string rest(reinterpret_cast<const char *>(data), size);
    std::string summary = Line(rest), arguments = Line(rest);
    KXSnmpVar *records = nullptr;
    const int read = KXSnmpFileReadText(rest.data(), rest.size(), &records);
    const int count = read > 0 ? read : 0;

    std::string names = arguments;
    std::vector<char *> variables;
    const int found = GTErmittleTextElemente(names.data(), " ", nullptr, nullptr);
    for (int i = 0, at = 0; i < found; ++i, at += static_cast<int>(std::strlen(names.data() + at)) + 1)
        variables.push_back(names.data() + at);

    KXTrapDescription d{};
    d.Summary = summary.data(), d.SummaryLength = static_cast<int>(summary.size());
    d.Arguments = arguments.data(), d.ArgumentCount = static_cast<int>(arguments.size());
    d.Description = summary.data(), d.DescriptionLength = d.SummaryLength;
    d.Variables = variables.data(), d.VariableCount = static_cast<int>(variables.size());
    Render(&d, count, records, nullptr);
    d.SummaryLength = 0;  // the description and its variables instead
    Render(&d, count, records, nullptr);

    KXTrapDescription unknown{};
    GTCreateUnknownTrap(&unknown, count - 2, summary.c_str(), arguments.c_str(), "6");
    Render(&unknown, count, records, &unknown);
    if (GTDetermineTypes(records, count, nullptr) == 1)
        for (int i = 0; i < count; ++i) std::free(records[i].Type);
    KXSnmpFileFreeResources(records);
    return 0;
}
