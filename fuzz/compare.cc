// CompareFunction over arbitrary types, operators, operands and positions:
// any input gives 0 or 1 and leaves the left entry on one of its values.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_template.h"

namespace {

// An entry holding the values of text split at "~".
EingabeElement ListEntry(const std::string &text) {
    std::string block = text;
    int values = 1;
    for (char &ch : block)
        if (ch == '~') {
            ch = '\0';
            ++values;
        }
    block.push_back('\0');
    char *wert = static_cast<char *>(std::malloc(block.size()));
    std::memcpy(wert, block.data(), block.size());
    return EingabeElement{strdup("L"), 1, wert, values, 0, 'j', nullptr};
}

}  // namespace

// Input: control bytes (cycle index, value index, operator, which entry is
// "this"), then type, operator text, right text and the left values, split at NULs.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 4) return 0;
    const int cycleIndex = static_cast<int8_t>(data[0]) % 4;
    const int valueIndex = static_cast<int8_t>(data[1]) % 8;
    const int rawOp = static_cast<int8_t>(data[2]);
    const int elementIndex = data[3] % 4 - 1;
    auto texts = kx::fuzz::Texts(data + 4, size - 4, 4);
    const std::string left = texts[3].c_str();
    EingabeElement entries[2] = {ListEntry(left), ListEntry("1~2~3")};
    EingabeElement *list = entries;
    int count = 2;
    _pEingabe = &list;
    _pEingabeAnzahl = &count;
    const int op = texts[1].size() <= 2 ? DetermineCompareIndex(texts[1].c_str(), static_cast<int>(texts[1].size()))
                                        : rawOp;
    const int result = CompareFunction(texts[0].c_str(), op, left.c_str(), texts[2].c_str(), cycleIndex, 0,
                                       valueIndex, elementIndex, &list, &count);
    _pEingabe = nullptr;
    _pEingabeAnzahl = nullptr;
    if (result != 0 && result != 1) std::abort();
    for (EingabeElement &e : entries) {
        size_t bytes = 0;
        for (int v = 0; v < e.WertGesetzt; ++v) bytes += std::strlen(e.Wert + bytes) + 1;
        if (e.WertPosition < 0 || static_cast<size_t>(e.WertPosition) >= bytes) std::abort();
        std::free(e.Name);
        std::free(e.Wert);
    }
    return 0;
}
