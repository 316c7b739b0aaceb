// File-mode throughput of the template processor on 16 MiB templates, one
// without placeholders and one dense with them, against copying the same
// bytes with fread/fwrite through a buffer of the same 64 KiB.
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "kx_template.h"
#include "bench_support.h"
#include "measure.h"

namespace {

constexpr size_t kVolume = 16u << 20;

// One value each; the list lives for the whole run.
struct List {
    EingabeElement *entries = nullptr;
    int count = 0;
    void Add(const char *name, const char *value) {
        entries = static_cast<EingabeElement *>(realloc(entries, sizeof(EingabeElement) * static_cast<size_t>(count + 1)));
        entries[count++] = EingabeElement{strdup(name), static_cast<uint32_t>(strlen(name)), strdup(value), 1, 0,
                                          'n', nullptr};
    }
};

std::string Repeated(const char *line, size_t size) {
    std::string text;
    text.reserve(size + 256);
    while (text.size() < size) text += line;
    return text;
}

void Copy(const std::string &path, FILE *sink) {
    FILE *in = std::fopen(path.c_str(), "r");
    // The same block size as the page engine's reads and page buffer.
    static char buffer[64 * 1024];
    for (size_t got; (got = std::fread(buffer, 1, sizeof buffer, in)) > 0;) std::fwrite(buffer, 1, got, sink);
    std::fclose(in);
}

// The page and the copy run in turns, and each keeps its best run: a busy
// moment of the shared machine then falls on both alike.
void Measure(const char *name, const std::string &path, List &list, FILE *sink, int turns) {
    double page = 1e30, copy = 1e30;
    for (int turn = 0; turn < turns; ++turn) {
        page = std::min(page, kx::bench::BestSeconds([&] {
            ErsetzeUndGebeHtmlDateiAus(path.c_str(), nullptr, 0, 1, &list.count, &list.entries);
        }, 1));
        copy = std::min(copy, kx::bench::BestSeconds([&] { Copy(path, sink); }, 1));
    }
    kx::bench::PrintRate(name, static_cast<double>(kVolume), page, "fread/fwrite", copy);
    std::printf("%-32s %10.2f\n", "  time, page engine / copy", page / copy);
}

}  // namespace

int main() {
    const kx::bench::Files files;
    List list;
    list.Add("Ersetzungsanfang", "{");
    list.Add("Ersetzungsende", "}");
    list.Add("user", "bob");
    list.Add("host", "blade-07.lab");
    list.Add("state", "2 - Warning");
    list.Add("query", "a b&c");
    FILE *sink = std::fopen("/dev/null", "w");
    _Utilsfpout = sink;
    const std::string plain = files.Write(
        "plain.htm",
        Repeated("<tr><td class=\"name\">Server</td><td>running since boot, no faults</td></tr>\n", kVolume));
    const std::string dense = files.Write(
        "dense.htm",
        Repeated("<tr><td>{user}</td><td>{host}</td><td>{state}</td><td>{{query}}</td><td>{nope}</td></tr>\n",
                 kVolume));
    // The plain page takes about a millisecond: more turns find its best.
    Measure("template without placeholders", plain, list, sink, 30);
    Measure("template dense with placeholders", dense, list, sink, 3);
    _Utilsfpout = nullptr;
    std::fclose(sink);
    return 0;
}
