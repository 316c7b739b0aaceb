// Profile files: the input is a profile read into a list, written back with
// the divider it named and read again; every value read must be a piece of
// the file, and the values written must come back as they were.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <string>
#include <vector>

#include "fuzz_list.h"
#include "kx_profile.h"

namespace {

std::string folder;
const char *const kNames[] = {"Columns", "Refresh", "A", "", "ErrorText"};
constexpr int kNameCount = 5;

EingabeElement *NewList() {
    auto *list = static_cast<EingabeElement *>(std::calloc(kNameCount, sizeof(EingabeElement)));
    for (int i = 0; i < kNameCount; ++i) {
        list[i].Name = strdup(kNames[i]);
        list[i].NameLaenge = static_cast<uint32_t>(std::strlen(kNames[i]));
        list[i].Art = 'n';
    }
    return list;
}

// The values of every entry, read through WertPosition steps.
std::vector<std::string> Values(EingabeElement *list, size_t size) {
    std::vector<std::string> values;
    for (int i = 0; i < kNameCount - 1; ++i)
        for (int v = 0, at = 0; list[i].Wert != nullptr && v < list[i].WertGesetzt; ++v) {
            values.emplace_back(list[i].Wert + at);
            if (values.back().size() > size) std::abort();
            at += static_cast<int>(values.back().size()) + 1;
        }
    return values;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    char pattern[] = "/tmp/kx-fuzz-profile.XXXXXX";
    if (mkdtemp(pattern) == nullptr) std::abort();
    folder = pattern;
    std::atexit([] {
        std::remove((folder + "/in").c_str());
        std::remove((folder + "/out").c_str());
        std::remove((folder + "/.out.lock").c_str());
        rmdir(folder.c_str());
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string in = folder + "/in", out = folder + "/out";
    if (std::FILE *file = std::fopen(in.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    int count = kNameCount;
    EingabeElement *list = NewList();
    if (ReadIniFile(count, list, in.c_str()) != 0) std::abort();
    const std::vector<std::string> first = Values(list, size);
    const std::string divider(reinterpret_cast<const char *>(data), strnlen(reinterpret_cast<const char *>(data),
                                                                             std::min<size_t>(size, 1)));
    const char *names[] = {"Columns", "Refresh", "A", "", "Nobody"};
    if (WriteIniFile(count, list, divider.empty() ? "|" : divider.c_str(), "w", 5, names, out.c_str(), nullptr,
                     nullptr) != 0)
        std::abort();
    // Read back: the same values, unless one holds the divider it was
    // joined with (it then splits into more).
    int againCount = kNameCount;
    EingabeElement *again = NewList();
    if (ReadIniFile(againCount, again, out.c_str()) != 0) std::abort();
    const std::string glue = divider.empty() ? "|" : divider;
    bool split = false;
    for (const std::string &value : first) split = split || value.find(glue) != std::string::npos;
    if (!split && Values(again, size + 1) != first) std::abort();
    kx::fuzz::FreeList(again, againCount);
    int length = 0;
    const char *exclusions[] = {"=", nullptr};
    std::free(UtilsReadFile(in.c_str(), &length, exclusions, 2));
    if (length < 0 || static_cast<size_t>(length) > size) std::abort();
    kx::fuzz::FreeList(list, count);
    return 0;
}
