// A server table of four values per row: rendered by the page engine through
// a CYCLE page and by ClearSilver from the same data as HDF (the same bytes,
// checked), and written with fwrite (the limit), all to the same sink in one
// run. Then the growth rows: 1k/10k/100k rows, 0/100/10,000 other entries in
// the list, one logical line of 1k to 64k placeholders, and a list of
// 1k/10k/100k entries declared by AppendToEingabe.
#include <ClearSilver/ClearSilver.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kx_input.h"
#include "kx_list.h"
#include "kx_template.h"
#include "measure.h"
#include "bench_support.h"

namespace {

constexpr const char *kCyclePage =
    "<table>\n"
    "<tr><th>Server</th><th>Address</th><th>State</th><th>Uptime</th></tr>\n"
    "<!{CYCLE}>\n"
    "<tr><td>{Names}</td><td>{Addresses}</td><td>{States}</td><td>{Uptimes}</td></tr>\n"
    "<!{/CYCLE}>\n"
    "</table>\n";

constexpr const char *kClearSilverPage =
    "<table>\n"
    "<tr><th>Server</th><th>Address</th><th>State</th><th>Uptime</th></tr>\n"
    "<?cs each:s = Servers ?><tr><td><?cs var:s.Name ?></td><td><?cs var:s.Address ?></td>"
    "<td><?cs var:s.State ?></td><td><?cs var:s.Uptime ?></td></tr>\n<?cs /each ?></table>\n";

constexpr const char *kColumns[] = {"Names", "Addresses", "States", "Uptimes"};
constexpr const char *kFields[] = {"Name", "Address", "State", "Uptime"};

std::vector<std::vector<std::string>> Columns(int rows) {
    static const char *const states[] = {"OK", "Warning", "Critical", "Unknown"};
    std::vector<std::vector<std::string>> columns(4);
    for (int i = 0; i < rows; ++i) {
        columns[0].push_back("blade-" + std::to_string(i) + ".rack" + std::to_string(i / 16));
        columns[1].push_back("10." + std::to_string(i / 65536) + "." + std::to_string(i / 256 % 256) + "." +
                             std::to_string(i % 256));
        columns[2].push_back(states[i % 4]);
        columns[3].push_back(std::to_string(86400 + i * 37) + " s");
    }
    return columns;
}

// A list entry holding one value per row, laid end to end with their NULs.
void DeclareList(EingabeElement **list, int *count, const char *name, const std::vector<std::string> &values) {
    AppendToEingabe(count, list, "~", name, 2, nullptr);
    std::string packed;
    for (const std::string &value : values) packed.append(value).push_back('\0');
    EingabeElement &entry = (*list)[EingabewertIndex(name, *list, *count)];
    entry.Wert = static_cast<char *>(std::malloc(packed.size()));
    std::copy(packed.begin(), packed.end(), entry.Wert);
    entry.WertGesetzt = static_cast<int>(values.size());
    entry.WertPosition = 0;
}

// The input list of a page: the markers, `others` entries no placeholder
// names, and the columns.
struct PageList {
    EingabeElement *list = nullptr;
    int count = 0;
    PageList(const std::vector<std::vector<std::string>> &columns, int others) {
        AppendToEingabe(&count, &list, nullptr, "Ersetzungsanfang", 1, "{");
        AppendToEingabe(&count, &list, nullptr, "Ersetzungsende", 1, "}");
        for (int i = 0; i < others; ++i)
            AppendToEingabe(&count, &list, nullptr, ("Other" + std::to_string(i)).c_str(), 1, "x");
        for (size_t c = 0; c < columns.size(); ++c) DeclareList(&list, &count, kColumns[c], columns[c]);
    }
    ~PageList() { KXFreeEingabeList(list, count); }
    PageList(const PageList &) = delete;
    PageList &operator=(const PageList &) = delete;
    void Render(const std::string &page) {
        ErsetzeUndGebeHtmlDateiAus(page.c_str(), nullptr, iErsetzungsAnfang, iErsetzungsEnde, &count, &list);
    }
};

NEOERR *WriteTo(void *stream, char *text) {
    std::fputs(text, static_cast<std::FILE *>(stream));
    return STATUS_OK;
}

HDF *ClearSilverData(const std::vector<std::vector<std::string>> &columns) {
    HDF *data = nullptr;
    hdf_init(&data);
    for (size_t i = 0; i < columns[0].size(); ++i)
        for (size_t c = 0; c < columns.size(); ++c)
            hdf_set_value(data, ("Servers." + std::to_string(i) + "." + kFields[c]).c_str(), columns[c][i].c_str());
    return data;
}

void RenderClearSilver(HDF *data, std::FILE *out) {
    CSPARSE *parse = nullptr;
    cs_init(&parse, data);
    cs_parse_string(parse, strdup(kClearSilverPage), std::strlen(kClearSilverPage));
    cs_render(parse, out, WriteTo);
    cs_destroy(&parse);
}

// Seconds of the best run of work writing into sink from its start.
template <typename Work>
double OnSink(std::FILE *sink, Work &&work, int runs = 5) {
    return kx::bench::BestSeconds([&] {
        std::rewind(sink);
        _Utilsfpout = sink;
        work();
        std::fflush(sink);
        _Utilsfpout = nullptr;
    }, runs);
}

void Table(const kx::bench::Files &files, std::FILE *sink) {
    constexpr int kRows = 10000;
    const auto columns = Columns(kRows);
    const std::string page = files.Write("servers.htm", kCyclePage);
    PageList list(columns, 0);
    HDF *data = ClearSilverData(columns);
    const std::string bytes = kx::bench::Capture([&] { list.Render(page); });
    const std::string theirs = kx::bench::Capture([&] { RenderClearSilver(data, _Utilsfpout); });
    if (bytes != theirs) {
        std::printf("the page engine and ClearSilver rendered different bytes\n");
        std::exit(1);
    }
    const double engine = OnSink(sink, [&] { list.Render(page); });
    const double clearsilver = OnSink(sink, [&] { RenderClearSilver(data, sink); });
    const double written = OnSink(sink, [&] { std::fwrite(bytes.data(), 1, bytes.size(), sink); });
    std::printf("Server table of %d rows, four lists, %zu bytes, the same from both engines (best of 5)\n", kRows,
                bytes.size());
    kx::bench::PrintTime("page engine, CYCLE page", engine, kRows, written);
    kx::bench::PrintTime("ClearSilver, each loop", clearsilver, kRows, written);
    kx::bench::PrintTime("fwrite of the same bytes", written, kRows, written);
    std::printf("%-32s %9.2f\n", "page engine / ClearSilver", engine / clearsilver);
    hdf_destroy(&data);
}

void RowGrowth(const kx::bench::Files &files, std::FILE *sink) {
    const std::string page = files.Write("rows.htm", kCyclePage);
    std::printf("\nGrowth with the rows (ns per row; flat is linear)\n");
    for (const int rows : {1000, 10000, 100000}) {
        const auto columns = Columns(rows);
        PageList list(columns, 0);
        HDF *data = ClearSilverData(columns);
        const double engine = OnSink(sink, [&] { list.Render(page); }, 3);
        const double clearsilver = OnSink(sink, [&] { RenderClearSilver(data, sink); }, 3);
        std::printf("%7d rows   page engine %8.2f ms %6.0f ns/row   ClearSilver %8.2f ms %6.0f ns/row   ratio %.2f\n",
                    rows, engine * 1e3, engine * 1e9 / rows, clearsilver * 1e3, clearsilver * 1e9 / rows,
                    engine / clearsilver);
        hdf_destroy(&data);
    }
}

void EntryGrowth(const kx::bench::Files &files, std::FILE *sink) {
    const std::string page = files.Write("entries.htm", kCyclePage);
    const auto columns = Columns(10000);
    std::printf("\nThe 10,000-row table beside other entries in the list\n");
    double none = 0;
    for (const int others : {0, 100, 10000}) {
        PageList list(columns, others);
        const double engine = OnSink(sink, [&] { list.Render(page); }, 3);
        if (others == 0) none = engine;
        std::printf("%7d other entries   %8.2f ms   ratio to none %.2f\n", others, engine * 1e3, engine / none);
    }
}

void LongLines(const kx::bench::Files &files, std::FILE *sink) {
    const auto columns = Columns(1);
    PageList list(columns, 0);
    std::printf("\nOne logical line of placeholders (ns per placeholder; flat is linear)\n");
    for (const int placeholders : {1024, 4096, 16384, 65536}) {
        std::string line;
        for (int i = 0; i < placeholders; ++i) line += "<td>{Names}</td>";
        const std::string page = files.Write("long.htm", line + "\n");
        const double engine = OnSink(sink, [&] { list.Render(page); }, 3);
        std::printf("%7d placeholders   %8.2f ms   %6.0f ns each\n", placeholders, engine * 1e3,
                    engine * 1e9 / placeholders);
    }
}

void ListGrowth() {
    std::printf("\nDeclaring a list of entries one by one with AppendToEingabe (ns per entry)\n");
    for (const int entries : {1000, 10000, 100000}) {
        std::vector<std::string> names;
        for (int i = 0; i < entries; ++i) names.push_back("Entry" + std::to_string(i));
        const double took = kx::bench::BestSeconds([&] {
            EingabeElement *list = nullptr;
            int count = 0;
            for (const std::string &name : names) AppendToEingabe(&count, &list, nullptr, name.c_str(), 1, "x");
            KXFreeEingabeList(list, count);
        }, 3);
        std::printf("%7d entries   %8.2f ms   %6.0f ns each\n", entries, took * 1e3, took * 1e9 / entries);
    }
}

}  // namespace

int main() {
    const kx::bench::Files files;
    std::FILE *sink = std::tmpfile();
    Table(files, sink);
    RowGrowth(files, sink);
    EntryGrowth(files, sink);
    LongLines(files, sink);
    ListGrowth();
    std::fclose(sink);
    return 0;
}
