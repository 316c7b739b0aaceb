// kxpage: renders a page template from the command line, as a console CGI
// program would, for template authors.
//
//   kxpage [--app NAME_OR_DEFINITION] [--query 'a=1&b=2'] TEMPLATE
//
// NAME_OR_DEFINITION is an application name, searched like the CGI program
// searches it, or the path of a definition file. A name, given or taken from
// the query, must pass KXIsApplicationName, as in a CGI program. The page goes to standard
// output; problems go to standard error with a non-zero exit.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "kx_input.h"
#include "kx_list.h"
#include "kx_template.h"

namespace {

struct Options {
    std::string application;
    std::string query;
    std::string page;
};

constexpr const char *kUsage = "usage: kxpage [--app NAME_OR_DEFINITION] [--query 'a=1&b=2'] TEMPLATE\n";

std::optional<Options> ParseOptions(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if ((arg == "--app" || arg == "--query") && i + 1 < argc)
            (arg == "--app" ? options.application : options.query) = argv[++i];
        else if (!arg.starts_with("--") && options.page.empty())
            options.page = arg;
        else
            return std::nullopt;
    }
    if (options.page.empty()) return std::nullopt;
    return options;
}

bool IsDefinitionFile(const std::string &application) {
    return application.find('/') != std::string::npos || application.ends_with(".ini");
}

// A definition file as the in-memory block ErmittleEingabe reads: its lines
// as NUL-terminated texts, then an empty text.
std::optional<std::string> DefinitionBlock(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::string block, line;
    while (std::getline(file, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() && block.empty()) return std::nullopt;  // no separator line
        block.append(line).push_back('\0');
    }
    block.push_back('\0');
    return block;
}

// The application named on the command line, or by the query (decoded).
std::string ApplicationName(const Options &options) {
    if (!options.application.empty()) return options.application;
    const char *value = PositioniereAufSchluesselwortWert(options.query.c_str(), nullptr, nullptr);
    if (value == nullptr) return {};
    char *decoded = ServerDecoding(std::string(value, std::strcspn(value, "&")).c_str());
    std::string name = decoded != nullptr ? decoded : "";
    std::free(decoded);
    return name;
}

bool ReadDefinition(const std::string &application, EingabeElement **list, int *count) {
    if (application.empty()) return true;
    if (!IsDefinitionFile(application))
        return KXIsApplicationName(application.c_str()) &&
               ErmittleEingabe(application.c_str(), list, count, nullptr, 0) == 0;
    const auto block = DefinitionBlock(application);
    // The block must start with a byte that marks a definition text.
    if (!block || std::strchr(KX_DEFINITION_MARKERS, (*block)[0]) == nullptr || (*block)[0] == '\0') return false;
    return ErmittleEingabe(block->c_str(), list, count, nullptr, 0) == 0;
}

// Placeholders need their markers; "{" and "}" unless the definition says otherwise.
void EnsureMarkers(EingabeElement **list, int *count) {
    if (EingabewertIndex("Ersetzungsanfang", *list, *count) == *count)
        AppendToEingabe(count, list, nullptr, "Ersetzungsanfang", 1, "{");
    if (EingabewertIndex("Ersetzungsende", *list, *count) == *count)
        AppendToEingabe(count, list, nullptr, "Ersetzungsende", 1, "}");
}

void AssignQuery(const std::string &query, EingabeElement **list, int *count) {
    if (query.empty()) return;
    std::string elements = query;
    const int n = ErmittleTextElemente(elements.data(), "&", nullptr, nullptr);
    WertzuweisungEingabe(n, elements.data(), count, list, "~");
}

}  // namespace

int main(int argc, char **argv) {
    const auto options = ParseOptions(argc, argv);
    if (!options) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (std::FILE *page = std::fopen(options->page.c_str(), "r"))
        std::fclose(page);
    else
        return std::fprintf(stderr, "kxpage: cannot open template %s\n", options->page.c_str()), 1;
    EingabeElement *list = nullptr;
    int count = 0;
    const std::string application = ApplicationName(*options);
    if (!ReadDefinition(application, &list, &count)) {
        std::fprintf(stderr, "kxpage: no application definition for %s\n", application.c_str());
        KXFreeEingabeList(list, count);
        return 1;
    }
    EnsureMarkers(&list, &count);
    AssignQuery(options->query, &list, &count);
    ErsetzeUndGebeHtmlDateiAus(options->page.c_str(), nullptr, iErsetzungsAnfang, iErsetzungsEnde, &count, &list);
    std::fflush(_Utilsfpout ? _Utilsfpout : stdout);
    KXFreeEingabeList(list, count);
    return 0;
}
