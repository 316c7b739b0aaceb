// A request that repeats one indexed name n times ("ServerNames0=x&..."),
// assigned by WertzuweisungEingabe, against copying the same values into one
// string. The ratio must stay flat from 1k to 100k: appends cost amortised
// constant time.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_input.h"
#include "kx_template.h"
#include "measure.h"

namespace {

// n elements "ServerNames0=x", each with its NUL.
std::string Request(int n) {
    std::string text;
    for (int i = 0; i < n; ++i) text.append("ServerNames0=x").push_back('\0');
    return text;
}

double AssignSeconds(const std::string &request, int n) {
    return kx::bench::BestSeconds([&] {
        EingabeElement entries[] = {{strdup("ServerNames"), 11, nullptr, 0, 0, 'n', nullptr},
                                    {strdup("PLSet"), 5, nullptr, 0, 0, 'n', nullptr}};
        auto *list = static_cast<EingabeElement *>(std::malloc(sizeof entries));
        std::memcpy(list, entries, sizeof entries);
        int count = 2;
        WertzuweisungEingabe(n, request.data(), &count, &list, "~");
        for (int i = 0; i < count; ++i) {
            std::free(list[i].Name);
            std::free(list[i].Wert);
            std::free(list[i].Vorgabe);
        }
        std::free(list);
    }, 3);
}

double CopySeconds(int n) {
    return kx::bench::BestSeconds([&] {
        std::string values;
        for (int i = 0; i < n; ++i) values.append("x", 2);
        std::free(strdup(values.c_str()));
    }, 3);
}

}  // namespace

int main() {
    std::printf("One indexed name repeated n times in a request (best of 3)\n");
    for (int n : {1000, 10000, 100000}) {
        const double assign = AssignSeconds(Request(n), n), copy = CopySeconds(n);
        std::printf("n = %6d   assignment %9.3f ms   string appends %8.3f ms   ratio %7.1f\n", n, assign * 1e3,
                    copy * 1e3, assign / copy);
    }
    return 0;
}
