// A 10,000-row server table: rendered by the page engine through a CYCLE
// page, by ClearSilver from the same data as HDF, and written as the same
// bytes with fwrite (the limit), all in one run.
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

constexpr int kRows = 10000;

constexpr const char *kCyclePage =
    "<table>\n"
    "<tr><th>Server</th><th>State</th><th>Uptime</th></tr>\n"
    "<!{CYCLE}>\n"
    "<tr><td>{Names}</td><td>{States}</td><td>{Uptimes}</td></tr>\n"
    "<!{/CYCLE}>\n"
    "</table>\n";

constexpr const char *kClearSilverPage =
    "<table>\n"
    "<tr><th>Server</th><th>State</th><th>Uptime</th></tr>\n"
    "<?cs each:s = Servers ?><tr><td><?cs var:s.Name ?></td><td><?cs var:s.State ?></td>"
    "<td><?cs var:s.Uptime ?></td></tr>\n<?cs /each ?></table>\n";

struct Row {
    std::string name, state, uptime;
};

std::vector<Row> Rows() {
    static const char *const states[] = {"OK", "Warning", "Critical", "Unknown"};
    std::vector<Row> rows;
    for (int i = 0; i < kRows; ++i)
        rows.push_back({"blade-" + std::to_string(i) + ".rack" + std::to_string(i / 16), states[i % 4],
                        std::to_string(86400 + i * 37) + " s"});
    return rows;
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

NEOERR *WriteTo(void *stream, char *text) {
    std::fputs(text, static_cast<std::FILE *>(stream));
    return STATUS_OK;
}

void RenderClearSilver(HDF *data, std::FILE *out) {
    CSPARSE *parse = nullptr;
    cs_init(&parse, data);
    cs_parse_string(parse, strdup(kClearSilverPage), std::strlen(kClearSilverPage));
    cs_render(parse, out, WriteTo);
    cs_destroy(&parse);
}

}  // namespace

int main() {
    const std::vector<Row> rows = Rows();
    kx::bench::Files files;
    const std::string page = files.Write("servers.htm", kCyclePage);

    EingabeElement *list = nullptr;
    int count = 0;
    AppendToEingabe(&count, &list, nullptr, "Ersetzungsanfang", 1, "{");
    AppendToEingabe(&count, &list, nullptr, "Ersetzungsende", 1, "}");
    std::vector<std::string> names, states, uptimes;
    for (const Row &row : rows) names.push_back(row.name), states.push_back(row.state), uptimes.push_back(row.uptime);
    DeclareList(&list, &count, "Names", names);
    DeclareList(&list, &count, "States", states);
    DeclareList(&list, &count, "Uptimes", uptimes);

    HDF *data = nullptr;
    hdf_init(&data);
    for (int i = 0; i < kRows; ++i) {
        const std::string prefix = "Servers." + std::to_string(i) + ".";
        hdf_set_value(data, (prefix + "Name").c_str(), rows[static_cast<std::size_t>(i)].name.c_str());
        hdf_set_value(data, (prefix + "State").c_str(), rows[static_cast<std::size_t>(i)].state.c_str());
        hdf_set_value(data, (prefix + "Uptime").c_str(), rows[static_cast<std::size_t>(i)].uptime.c_str());
    }

    // The bytes of the page, captured once from the engine.
    const std::string bytes = kx::bench::Capture([&] {
        ErsetzeUndGebeHtmlDateiAus(page.c_str(), nullptr, iErsetzungsAnfang, iErsetzungsEnde, &count, &list);
    });
    // Every page goes to the same file, written from its start each time.
    std::FILE *sink = std::tmpfile();
    const double engine = kx::bench::BestSeconds([&] {
        std::rewind(sink);
        _Utilsfpout = sink;
        ErsetzeUndGebeHtmlDateiAus(page.c_str(), nullptr, iErsetzungsAnfang, iErsetzungsEnde, &count, &list);
        std::fflush(sink);
        _Utilsfpout = nullptr;
    });
    const double clearsilver = kx::bench::BestSeconds([&] {
        std::rewind(sink);
        RenderClearSilver(data, sink);
        std::fflush(sink);
    });
    const double written = kx::bench::BestSeconds([&] {
        std::rewind(sink);
        std::fwrite(bytes.data(), 1, bytes.size(), sink);
        std::fflush(sink);
    });

    std::printf("Server table of %d rows, three lists, %zu bytes (best of 5)\n", kRows, bytes.size());
    kx::bench::PrintTime("page engine, CYCLE page", engine, kRows, written);
    kx::bench::PrintTime("ClearSilver, each loop", clearsilver, kRows, written);
    kx::bench::PrintTime("fwrite of the same bytes", written, kRows, written);
    std::fclose(sink);
    hdf_destroy(&data);
    KXFreeEingabeList(list, count);
    return 0;
}
