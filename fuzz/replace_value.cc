// DetermineReplaceValue and ReplaceValue on any placeholder text: the text
// comes back unchanged, the index list is ascending within what was asked.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "page_list.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    kx::fuzz::PageList page;
    const bool control = data[0] & 1;
    std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);
    text = text.c_str();
    const std::string original = text;
    char *end = std::strrchr(text.data(), '}');
    ErsetzungsName name = {};
    char message[KX_MESSAGE_SIZE];
    int *indices = nullptr, valueIndex = 0;
    char *bracket = nullptr;
    _InCreateValueFromControl = control;
    const int count = DetermineReplaceValue(text.data(), end, page.Count(), page.List(), "~", &name,
                                            message, &indices, &bracket, &valueIndex, -1);
    if (text != original || std::strlen(message) >= KX_MESSAGE_SIZE) std::abort();
    for (int i = 1; i < count && indices != nullptr; ++i)
        if (indices[i] <= indices[i - 1]) std::abort();
    std::free(indices);
    std::free(name.Liste);
    name = {};
    ReplaceValue(text.data(), end, page.Count(), page.List(), "~", &name, message, &valueIndex, 1);
    std::free(name.Liste);
    _InCreateValueFromControl = 0;
    if (text != original) std::abort();
    return 0;
}
