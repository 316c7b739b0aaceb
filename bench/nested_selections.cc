// Templates of nested selections 48 levels deep ("{user[" ... "x" ... "]}"),
// the input that once held a CGI program for minutes, against templates of
// the same size made of plain placeholders. The evaluation budget of a line
// keeps the ratio flat from 1 KB to 100 KB: the work grows with the bytes.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench_support.h"
#include "kx_template.h"
#include "measure.h"

namespace {

std::string Repeated(const std::string &line, size_t size) {
    std::string text;
    while (text.size() < size) text += line;
    return text;
}

std::string Nested(int depth) {
    std::string line;
    for (int i = 0; i < depth; ++i) line += "{user[";
    line += "x";
    for (int i = 0; i < depth; ++i) line += "]}";
    return line + "\n";
}

double PageSeconds(const std::string &path, EingabeElement **list, int *count) {
    return kx::bench::BestSeconds([&] {
        kx::bench::Capture([&] { ErsetzeUndGebeHtmlDateiAus(path.c_str(), nullptr, 0, 1, count, list); });
    }, 3);
}

}  // namespace

int main() {
    const kx::bench::Files files;
    EingabeElement *list = static_cast<EingabeElement *>(std::malloc(3 * sizeof(EingabeElement)));
    list[0] = {strdup("Ersetzungsanfang"), 16, strdup("{"), 1, 0, 'n', nullptr};
    list[1] = {strdup("Ersetzungsende"), 14, strdup("}"), 1, 0, 'n', nullptr};
    list[2] = {strdup("user"), 4, strdup("bob"), 1, 0, 'n', nullptr};
    int count = 3;
    // MatchIt evaluates nested texts against the process-wide list.
    _pEingabe = &list;
    _pEingabeAnzahl = &count;
    iErsetzungsAnfang = 0;
    iErsetzungsEnde = 1;
    std::printf("Nested selections, 48 levels per line, against plain placeholders (best of 3)\n");
    for (size_t size : {size_t{1} << 10, size_t{10} << 10, size_t{100} << 10}) {
        const std::string nested = files.Write("nested.htm", Repeated(Nested(48), size));
        const std::string plain = files.Write("plain.htm", Repeated("<p>{user} {user} {user}</p>\n", size));
        const double attack = PageSeconds(nested, &list, &count), reference = PageSeconds(plain, &list, &count);
        std::printf("%4zu KB   nested %9.2f ms (%7.2f ms per KB)   plain %8.2f ms   ratio %7.1f\n", size >> 10,
                    attack * 1e3, attack * 1e3 / static_cast<double>(size >> 10), reference * 1e3,
                    attack / reference);
    }
    KXFreeEingabeList(list, count);
    return 0;
}
