// Server-list database reader: any text as a database file. The first line
// is also taken as a condition; every table's scheme, rows and entries are
// read and their texts walked.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libDBAsciiAccess.h"

namespace {

void WalkTable(DBAsciiAccessDatabase *db, const std::string &table, const std::string &condition) {
    int columns = 0;
    char **names = nullptr;
    if (DBAsciiAccessGetScheme(db, table.c_str(), &columns, &names) != 0) std::abort();
    for (int c = 0; c < columns; ++c) {
        // The first column of that name.
        const int index = DBAsciiAccessGetElementColumn(db, table.c_str(), names[c]);
        if (index < 0 || index > c || std::strcmp(names[index], names[c]) != 0) std::abort();
        DBAsciiAccessRow *rows = nullptr;
        const int n = DBAsciiAccessGetAllEntriesByCondition(db, table.c_str(), names[c], &rows, 0, "", 114, 1, 110, 0, 0);
        for (int r = 0; r < n; ++r)
            for (int k = 0; k < columns; ++k) (void)std::strlen(rows[r][k]);
        DBAsciiAccessFree(rows);
    }
    char **entries = nullptr;
    const int n = DBAsciiAccessGetAllEntries(db, table.c_str(), condition.c_str(), &entries, 0, 0);
    for (int i = 0; i < n; ++i) (void)std::strlen(entries[i]);
    DBAsciiAccessFree(entries);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    DBAsciiAccessDatabase *db = nullptr;
    if (DBAsciiAccessOpenText(text.data(), text.size(), &db) != 0) std::abort();
    const std::string condition(text.substr(0, text.find('\n')));
    // Table names are the texts between "[" and "]" at line starts; try each.
    for (std::size_t at = text.find('['); at != std::string_view::npos; at = text.find('[', at + 1)) {
        const std::size_t close = text.find(']', at);
        if (close == std::string_view::npos) break;
        const std::string name(text.substr(at + 1, close - at - 1));
        if (name.find('\0') == std::string::npos && DBAsciiAccessTableOpen(db, name.c_str()) == 0)
            WalkTable(db, name, condition);
    }
    DBAsciiAccessCloseKeepStaticDllInfo(db);
    return 0;
}
