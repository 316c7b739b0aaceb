// ChangeSubText: the reported length is the length of the text it made.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 3);
    const std::string &set = texts[0];
    const char *text = texts[2].c_str();
    int length = -1;
    char *changed = ChangeSubText(text, set.c_str(), static_cast<int>(set.size()), texts[1].c_str(), &length);
    if (changed != text) {
        if (length != static_cast<int>(std::strlen(changed))) std::abort();
        std::free(changed);
    }
    return 0;
}
