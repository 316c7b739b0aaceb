// Differential target of the page engine: the same random template and list
// rendered by the library and by the engine as it was before its lines were
// parsed once and its output buffered (fuzz/reference/, compiled into this
// target only). Any differing byte of the page, of the string result or of
// the list left behind is a fault.
//
// Input: list lines, a NUL, then the template. A list line is
// "name=value|value|..." (several values make a list entry); a line starting
// with '!' gives the entry the kind 'x', one starting with '?' makes the value
// the entry's default instead. The markers "{" and "}" are always entries 0
// and 1, and "Application" names the page; an input of even length gets
// sixteen more entries "f0" to "f15" before its own, so that names are looked
// up the way long lists are.
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "fuzz_list.h"
#include "kx_template.h"
#include "reference/invocation.h"

namespace {

struct Spec {
    std::string name;
    std::vector<std::string> values;
    char kind = 'n';
    bool asDefault = false;
};

// Entries enough for the engine to look names up through its index.
constexpr int kFillers = 16;

std::vector<Spec> ParseSpecs(const std::string &text, bool fill) {
    // The application named like the page: no user id is handed out.
    std::vector<Spec> specs = {{"Ersetzungsanfang", {"{"}}, {"Ersetzungsende", {"}"}}, {"Application", {"page"}}};
    for (int i = 0; fill && i < kFillers; ++i) specs.push_back({"f" + std::to_string(i), {std::to_string(i)}});
    size_t pos = 0;
    while (pos < text.size() && specs.size() < 64) {
        size_t end = text.find('\n', pos);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(pos, end - pos);
        pos = end + 1;
        Spec spec;
        if (!line.empty() && line[0] == '!') spec.kind = 'x', line.erase(0, 1);
        if (!line.empty() && line[0] == '?') spec.asDefault = true, line.erase(0, 1);
        const size_t eq = line.find('=');
        spec.name = line.substr(0, eq);
        if (spec.name.empty()) continue;
        for (size_t at = eq; at != std::string::npos;) {
            const size_t bar = line.find('|', at + 1);
            spec.values.push_back(line.substr(at + 1, bar == std::string::npos ? std::string::npos : bar - at - 1));
            at = bar;
        }
        if (spec.values.size() > 1 && spec.kind == 'n') spec.kind = 'j';
        specs.push_back(spec);
    }
    return specs;
}

char *Copy(const std::string &text) {
    char *copy = static_cast<char *>(std::malloc(text.size() + 1));
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

// A list built afresh from the specs; the process-wide list points to it.
class List {
public:
    explicit List(const std::vector<Spec> &specs) {
        list_ = static_cast<EingabeElement *>(std::calloc(specs.size(), sizeof(EingabeElement)));
        for (const Spec &spec : specs) {
            EingabeElement &e = list_[count_++];
            e = EingabeElement{Copy(spec.name), static_cast<uint32_t>(spec.name.size()), nullptr, 0, 0, spec.kind, nullptr};
            if (spec.asDefault) {
                e.Vorgabe = Copy(spec.values.empty() ? "" : spec.values[0]);
                continue;
            }
            std::string block;
            for (const std::string &value : spec.values) block.append(value.c_str()).push_back('\0');
            if (spec.values.empty()) continue;
            e.Wert = static_cast<char *>(std::malloc(block.size()));
            std::memcpy(e.Wert, block.data(), block.size());
            e.WertGesetzt = static_cast<int32_t>(spec.values.size());
        }
        iErsetzungsAnfang = 0;
        iErsetzungsEnde = 1;
        _pEingabe = &list_;
        _pEingabeAnzahl = &count_;
    }
    ~List() {
        kx::fuzz::FreeList(list_, count_);
        _pEingabe = nullptr;
        _pEingabeAnzahl = nullptr;
    }
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    int *Count() { return &count_; }
    EingabeElement **Entries() { return &list_; }

    // Names, kinds, values and defaults, as one text to compare.
    std::string Dump() const {
        std::string dump;
        for (int i = 0; i < count_; ++i) {
            const EingabeElement &e = list_[i];
            dump.append(e.Name).push_back('\1');
            dump.push_back(e.Art);
            dump += std::to_string(e.WertGesetzt) + ":" + std::to_string(e.WertPosition) + ":";
            size_t offset = 0;
            for (int v = 0; v < e.WertGesetzt; ++v) {
                dump.append(e.Wert + offset).push_back('\2');
                offset += std::strlen(e.Wert + offset) + 1;
            }
            if (e.Vorgabe != nullptr) dump.append(e.Vorgabe);
            dump.push_back('\n');
        }
        return dump;
    }

private:
    EingabeElement *list_ = nullptr;
    int count_ = 0;
};

using Engine = void (*)(const char *, char **, int, int, int *, EingabeElement **);

struct Rendering {
    std::string page;
    bool hasResult = false;
    std::string list;
};

const std::string &Directory() {
    static const std::string directory = [] {
        char pattern[] = "/tmp/kx-fuzz-differential.XXXXXX";
        std::string made = mkdtemp(pattern) != nullptr ? pattern : "/tmp";
        mkdir((made + "/ini").c_str(), 0700);
        if (FILE *texts = std::fopen((made + "/ini/page.ini").c_str(), "w")) {
            std::fputs("|\ntitle=Title {user}\na%20b=spaced\n[S]\nk=v\n", texts);
            std::fclose(texts);
        }
        return made;
    }();
    return directory;
}

Rendering RenderString(Engine engine, const std::vector<Spec> &specs, const std::string &text, intptr_t cycle) {
    List list(specs);
    Rendering out;
    char *result = reinterpret_cast<char *>(cycle);
    engine(text.c_str(), &result, 0, 1, list.Count(), list.Entries());
    out.hasResult = result != nullptr;
    if (result != nullptr) out.page = result;
    std::free(result);
    out.list = list.Dump();
    return out;
}

Rendering RenderFile(Engine engine, const std::vector<Spec> &specs, const std::string &path) {
    List list(specs);
    Rendering out;
    char *buffer = nullptr;
    size_t size = 0;
    FILE *sink = open_memstream(&buffer, &size);
    FILE *saved = _Utilsfpout;
    _Utilsfpout = sink;
    engine(path.c_str(), nullptr, 0, 1, list.Count(), list.Entries());
    _Utilsfpout = saved;
    std::fclose(sink);
    out.page.assign(buffer, size);
    std::free(buffer);
    out.list = list.Dump();
    return out;
}

void Compare(const Rendering &mine, const Rendering &theirs, const char *mode) {
    if (mine.hasResult != theirs.hasResult) {
        std::fprintf(stderr, "%s mode: a result only from %s\n", mode, mine.hasResult ? "the library" : "the reference");
        std::abort();
    }
    const size_t common = std::min(mine.page.size(), theirs.page.size());
    size_t at = 0;
    while (at < common && mine.page[at] == theirs.page[at]) ++at;
    if (at < common || mine.page.size() != theirs.page.size()) {
        std::fprintf(stderr, "%s mode: first differing byte at %zu (library %zu bytes, reference %zu)\n", mode, at,
                     mine.page.size(), theirs.page.size());
        std::abort();
    }
    if (mine.list != theirs.list) {
        std::fprintf(stderr, "%s mode: the lists left behind differ\n", mode);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size > 8192) return 0;
    const std::vector<std::string> texts = kx::fuzz::Texts(data, size, 2);
    const std::vector<Spec> specs = ParseSpecs(texts[0], size % 2 == 0);
    const intptr_t cycle = static_cast<intptr_t>(size % 3) - 1;
    Compare(RenderString(ErsetzeUndGebeHtmlDateiAus, specs, texts[1], cycle),
            RenderString(kx::tmpl::reference::ErsetzeUndGebeHtmlDateiAus, specs, texts[1], cycle), "string");

    const std::string path = Directory() + "/page.htm";
    FILE *page = std::fopen(path.c_str(), "wb");
    if (page == nullptr) return 0;
    std::fwrite(texts[1].data(), 1, texts[1].size(), page);
    std::fclose(page);
    Compare(RenderFile(ErsetzeUndGebeHtmlDateiAus, specs, path),
            RenderFile(kx::tmpl::reference::ErsetzeUndGebeHtmlDateiAus, specs, path), "file");
    return 0;
}
