// Inside the database library: the tables of a database file.
#ifndef KX_PLATFORM_LIBDBASCIIACCESS_DATABASE_H
#define KX_PLATFORM_LIBDBASCIIACCESS_DATABASE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dbascii {

struct Table {
    std::string name;
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;  // each as long as columns
    std::vector<char *> columnPointers;           // handed out by the scheme call

    std::optional<std::size_t> Column(std::string_view column) const;
};

// Reads a database file's text; never fails (lines it cannot place are
// passed over, see docs/formats.md).
std::vector<Table> ParseDatabase(std::string_view text);

// One test of a condition: the row's Key compared with a value.
struct Test {
    std::size_t column;
    std::string value;
    bool equal;  // "=" or "!="
};

// A condition "Column?Key=value&Key!=value" of a table; nothing when it
// is not well formed or names a column the table lacks.
struct Condition {
    std::size_t result;
    std::vector<Test> tests;
};
std::optional<Condition> ParseCondition(const Table &table, std::string_view text);

}  // namespace dbascii

#endif
