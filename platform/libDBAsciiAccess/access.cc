// The database operations over the parsed tables. Results are single malloc
// blocks (pointers first, texts behind them) so that one free releases them.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

#include "companion/libDBAsciiAccess.h"
#include "database.h"
#include "platform/text_block.h"

struct DBAsciiAccessDatabase {
    std::vector<dbascii::Table> tables;
};

namespace dbascii {
namespace {

const Table *FindTable(const DBAsciiAccessDatabase *handle, const char *table) {
    if (handle == nullptr || table == nullptr) return nullptr;
    for (const Table &candidate : handle->tables)
        if (candidate.name == table) return &candidate;  // the first table of a name counts
    return nullptr;
}

std::optional<std::string> ReadFile(const char *path) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    std::string contents;
    char buffer[65536];
    for (;;) {
        const ssize_t got = read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            close(fd);
            if (got < 0) return std::nullopt;
            return contents;
        }
        contents.append(buffer, static_cast<std::size_t>(got));
    }
}

int OpenText(std::string_view text, DBAsciiAccessDatabase **handle) {
    *handle = new DBAsciiAccessDatabase{ParseDatabase(text)};
    return 0;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return lower(x) == lower(y); });
}

bool Matches(const Condition &condition, const std::vector<std::string> &row) {
    for (const Test &test : condition.tests)
        if ((row[test.column] == test.value) != test.equal) return false;
    return true;
}

// One block: the row pointers, each row's cell pointers, then the texts.
DBAsciiAccessRow *RowBlock(const std::vector<const std::vector<std::string> *> &rows, std::size_t columns) {
    std::vector<const std::string *> cells;
    for (const auto *row : rows)
        for (const std::string &cell : *row) cells.push_back(&cell);
    std::size_t size = (rows.size() + cells.size()) * sizeof(char *);
    for (const std::string *cell : cells) size += cell->size() + 1;
    char *block = static_cast<char *>(std::malloc(size));
    if (block == nullptr) return nullptr;
    auto *rowPointers = reinterpret_cast<DBAsciiAccessRow *>(block);
    auto *cellPointers = reinterpret_cast<char **>(rowPointers + rows.size());
    char *at = reinterpret_cast<char *>(cellPointers + cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        cellPointers[i] = static_cast<char *>(std::memcpy(at, cells[i]->c_str(), cells[i]->size() + 1));
        at += cells[i]->size() + 1;
    }
    for (std::size_t r = 0; r < rows.size(); ++r) rowPointers[r] = cellPointers + r * columns;
    return rowPointers;
}

bool Enough(std::size_t found, int limit) { return limit > 0 && found >= static_cast<std::size_t>(limit); }

int Entries(const Table &table, const char *conditionText, char ***entries, int maxEntries) {
    const std::optional<Condition> condition = ParseCondition(table, conditionText);
    if (!condition) return DBASCII_BAD_CONDITION;
    std::vector<std::string_view> texts;
    for (const auto &row : table.rows) {
        if (Enough(texts.size(), maxEntries) || texts.size() == INT_MAX) break;
        if (Matches(*condition, row)) texts.push_back(row[condition->result]);
    }
    if (texts.empty()) return 0;
    *entries = kx::platform::PackTexts(texts);
    return *entries != nullptr ? static_cast<int>(texts.size()) : DBASCII_NO_MEMORY;
}

int RowsWhere(const Table &table, std::size_t column, std::string_view value, bool ignoreCase,
              DBAsciiAccessRow **rows, int maxRows) {
    std::vector<const std::vector<std::string> *> found;
    for (const auto &row : table.rows) {
        if (Enough(found.size(), maxRows) || found.size() == INT_MAX) break;
        if (ignoreCase ? EqualNoCase(row[column], value) : row[column] == value) found.push_back(&row);
    }
    if (found.empty()) return 0;
    *rows = RowBlock(found, table.columns.size());
    return *rows != nullptr ? static_cast<int>(found.size()) : DBASCII_NO_MEMORY;
}

}  // namespace
}  // namespace dbascii

extern "C" {

int DBAsciiAccessOpen(const char *file, int /*access*/, DBAsciiAccessDatabase **handle) {
    if (handle == nullptr) return DBASCII_BAD_ARGUMENT;
    *handle = nullptr;
    if (file == nullptr) return DBASCII_BAD_ARGUMENT;
    try {
        const std::optional<std::string> contents = dbascii::ReadFile(file);
        if (!contents) return DBASCII_UNREADABLE;
        return dbascii::OpenText(*contents, handle);
    } catch (const std::bad_alloc &) {
        return DBASCII_NO_MEMORY;
    }
}

int DBAsciiAccessOpenText(const char *text, size_t length, DBAsciiAccessDatabase **handle) {
    if (handle == nullptr) return DBASCII_BAD_ARGUMENT;
    *handle = nullptr;
    if (text == nullptr && length > 0) return DBASCII_BAD_ARGUMENT;
    try {
        return dbascii::OpenText(text != nullptr ? std::string_view(text, length) : std::string_view{}, handle);
    } catch (const std::bad_alloc &) {
        return DBASCII_NO_MEMORY;
    }
}

int DBAsciiAccessTableOpen(DBAsciiAccessDatabase *handle, const char *table) {
    return dbascii::FindTable(handle, table) != nullptr ? 0 : DBASCII_BAD_ARGUMENT;
}

int DBAsciiAccessGetAllEntries(DBAsciiAccessDatabase *handle, const char *table, const char *condition,
                               char ***entries, int maxEntries, int /*reserved*/) {
    if (entries == nullptr) return DBASCII_BAD_ARGUMENT;
    *entries = nullptr;
    const dbascii::Table *found = dbascii::FindTable(handle, table);
    if (found == nullptr || condition == nullptr) return DBASCII_BAD_ARGUMENT;
    try {
        return dbascii::Entries(*found, condition, entries, maxEntries);
    } catch (const std::bad_alloc &) {
        return DBASCII_NO_MEMORY;
    }
}

int DBAsciiAccessGetAllEntriesByCondition(DBAsciiAccessDatabase *handle, const char *table, const char *column,
                                          DBAsciiAccessRow **rows, int maxRows, const char *value, int comparison,
                                          int mode, int order, int /*reserved1*/, int /*reserved2*/) {
    if (rows == nullptr) return DBASCII_BAD_ARGUMENT;
    *rows = nullptr;
    const dbascii::Table *found = dbascii::FindTable(handle, table);
    if (found == nullptr || column == nullptr || value == nullptr) return DBASCII_BAD_ARGUMENT;
    const std::optional<std::size_t> index = found->Column(column);
    if (!index) return DBASCII_BAD_ARGUMENT;
    if (comparison != DBASCII_COMPARE_EQUAL || (order != DBASCII_ORDER_AS_STORED && order != 0) ||
        (mode != DBASCII_MODE_EXACT && mode != DBASCII_MODE_NOCASE))
        return DBASCII_BAD_CONDITION;
    try {
        return dbascii::RowsWhere(*found, *index, value, mode == DBASCII_MODE_NOCASE, rows, maxRows);
    } catch (const std::bad_alloc &) {
        return DBASCII_NO_MEMORY;
    }
}

int DBAsciiAccessGetElementColumn(DBAsciiAccessDatabase *handle, const char *table, const char *column) {
    const dbascii::Table *found = dbascii::FindTable(handle, table);
    if (found == nullptr || column == nullptr) return DBASCII_BAD_ARGUMENT;
    const std::optional<std::size_t> index = found->Column(column);
    return index && *index < INT_MAX ? static_cast<int>(*index) : DBASCII_BAD_ARGUMENT;
}

int DBAsciiAccessGetScheme(DBAsciiAccessDatabase *handle, const char *table, int *columnCount, char ***columnNames) {
    if (columnCount != nullptr) *columnCount = 0;
    if (columnNames != nullptr) *columnNames = nullptr;
    const dbascii::Table *found = dbascii::FindTable(handle, table);
    if (found == nullptr) return DBASCII_BAD_ARGUMENT;
    if (columnCount != nullptr) *columnCount = static_cast<int>(std::min<std::size_t>(found->columns.size(), INT_MAX));
    if (columnNames != nullptr && !found->columns.empty())
        *columnNames = const_cast<char **>(found->columnPointers.data());
    return 0;
}

void DBAsciiAccessFree(void *entries) { std::free(entries); }

int DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiAccessDatabase *handle) {
    delete handle;
    return 0;
}

}  // extern "C"
