// The template processor in file mode over any template, with a fixed list
// and a page text file beside the template; the page goes nowhere.
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "page_list.h"

namespace {

// A directory of our own for the template and its page text file.
const std::string &Directory() {
    static const std::string directory = [] {
        char pattern[] = "/tmp/kx-fuzz-template.XXXXXX";
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string path = Directory() + "/page.htm";
    FILE *page = std::fopen(path.c_str(), "wb");
    if (page == nullptr) return 0;
    std::fwrite(data, 1, size, page);
    std::fclose(page);
    kx::fuzz::PageList list;
    FILE *sink = std::fopen("/dev/null", "w");
    FILE *saved = _Utilsfpout;
    _Utilsfpout = sink;
    ErsetzeUndGebeHtmlDateiAus(path.c_str(), nullptr, 0, 1, list.Count(), list.List());
    _Utilsfpout = saved;
    if (sink != nullptr) std::fclose(sink);
    return 0;
}
