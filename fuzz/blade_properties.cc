// Blade properties from any server list: the first line is the address
// asked for, the rest the database text. The property list must be one
// block whose texts lie inside it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_inventory.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    const std::size_t line = text.find('\n');
    const std::string address = text.substr(0, line);
    const std::string database = line == std::string::npos ? std::string() : text.substr(line + 1);
    DBAsciiAccessDatabase *handle = nullptr;
    if (DBAsciiAccessOpenText(database.data(), database.size(), &handle) != 0) return 0;
    KXBladeProperties *properties = nullptr;
    const int result = KXDetermineBladeProperties(nullptr, address.c_str(), &handle, &properties);
    if (result < 0 && properties != nullptr) std::abort();
    if (properties != nullptr) {
        const char *begin = reinterpret_cast<const char *>(properties + 1);
        for (const char *t : {properties->Type, properties->ServerName, properties->ChassisName, properties->SystemName})
            if (t != nullptr && (t < begin || std::strlen(t) > database.size())) std::abort();
        if (properties->BladeMark < -1 || properties->BladeMark > 1) std::abort();
    }
    std::free(properties);
    DBAsciiAccessCloseKeepStaticDllInfo(handle);
    return 0;
}
