// Trap file reader: any bytes as a trap file; what it reads, written again
// and read back, gives the same records.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "companion/libSnmpFile.h"

namespace {

bool Same(const KXSnmpVar *a, const KXSnmpVar *b, int count) {
    for (int i = 0; i < count; ++i) {
        const size_t length = KXSnmpFileValueLength(a, i);
        if (std::strcmp(a[i].Oid, b[i].Oid) != 0 || std::strcmp(a[i].Type, b[i].Type) != 0 ||
            length != KXSnmpFileValueLength(b, i) || std::memcmp(a[i].Value, b[i].Value, length) != 0)
            return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    KXSnmpVar *records = nullptr;
    const int count = KXSnmpFileReadText(reinterpret_cast<const char *>(data), size, &records);
    if (count < 1) {
        if (records != nullptr) std::abort();
        return 0;
    }
    std::vector<size_t> lengths;
    for (int i = 0; i < count; ++i) lengths.push_back(KXSnmpFileValueLength(records, i));
    size_t length = 0;
    char *text = KXSnmpFileFormatText(records, lengths.data(), count, &length);
    KXSnmpVar *again = nullptr;
    if (text == nullptr || KXSnmpFileReadText(text, length, &again) != count || !Same(records, again, count))
        std::abort();
    std::free(text);
    KXSnmpFileFreeResources(again);
    KXSnmpFileFreeResources(records);
    return 0;
}
