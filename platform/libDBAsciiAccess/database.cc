// The database file: "[TABLE]" lines open tables, the first line after one
// names its columns, every further line is a row; fields are separated by
// "|" and trimmed of blanks; "#" lines and blank lines are comments.
#include "database.h"

#include <algorithm>

#include "platform/percent_escape.h"

namespace dbascii {
namespace {

using kx::platform::Unescape;

constexpr char kSeparator = '|';

std::string_view Trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
    return text;
}

// The fields of a line; a broken escape keeps the field as written. Fields
// are handed out as C texts, so each ends at its first NUL byte.
std::vector<std::string> Fields(std::string_view line) {
    std::vector<std::string> fields;
    for (;;) {
        const std::size_t end = line.find(kSeparator);
        const std::string_view field = Trim(line.substr(0, end));
        std::string text = Unescape(field).value_or(std::string(field));
        text.resize(std::min(text.size(), text.find('\0')));
        fields.push_back(std::move(text));
        if (end == std::string_view::npos) return fields;
        line.remove_prefix(end + 1);
    }
}

// "[NAME]": the table's name; nothing for other lines.
std::optional<std::string_view> TableName(std::string_view line) {
    if (line.size() < 3 || line.front() != '[' || line.back() != ']') return std::nullopt;
    const std::string_view name = Trim(line.substr(1, line.size() - 2));
    if (name.empty()) return std::nullopt;
    return name;
}

void AddRow(Table &table, std::string_view line) {
    std::vector<std::string> fields = Fields(line);
    fields.resize(table.columns.size());  // missing fields are empty, extra ones dropped
    table.rows.push_back(std::move(fields));
}

}  // namespace

std::optional<std::size_t> Table::Column(std::string_view column) const {
    const auto found = std::find(columns.begin(), columns.end(), column);
    if (found == columns.end()) return std::nullopt;
    return static_cast<std::size_t>(found - columns.begin());
}

std::vector<Table> ParseDatabase(std::string_view text) {
    std::vector<Table> tables;
    bool haveColumns = false;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = Trim(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.front() == '#') continue;
        if (const std::optional<std::string_view> name = TableName(line)) {
            tables.push_back(Table{std::string(*name), {}, {}, {}});
            haveColumns = false;
        } else if (tables.empty()) {
            continue;  // a row before any table belongs to none
        } else if (!haveColumns) {
            tables.back().columns = Fields(line);
            haveColumns = true;
        } else {
            AddRow(tables.back(), line);
        }
    }
    for (Table &table : tables)
        for (std::string &column : table.columns) table.columnPointers.push_back(column.data());
    return tables;
}

std::optional<Condition> ParseCondition(const Table &table, std::string_view text) {
    const std::size_t question = text.find('?');
    const std::optional<std::size_t> result = table.Column(Trim(text.substr(0, question)));
    if (!result) return std::nullopt;
    Condition condition{*result, {}};
    if (question == std::string_view::npos) return condition;
    std::string_view rest = text.substr(question + 1);
    for (;;) {
        const std::size_t end = rest.find('&');
        const std::string_view test = rest.substr(0, end);
        const std::size_t equals = test.find('=');
        if (equals == std::string_view::npos) return std::nullopt;
        const bool negated = equals > 0 && test[equals - 1] == '!';
        const std::optional<std::size_t> column = table.Column(Trim(test.substr(0, negated ? equals - 1 : equals)));
        std::optional<std::string> value = Unescape(Trim(test.substr(equals + 1)));
        if (!column || !value) return std::nullopt;
        condition.tests.push_back(Test{*column, std::move(*value), !negated});
        if (end == std::string_view::npos) return condition;
        rest.remove_prefix(end + 1);
    }
}

}  // namespace dbascii
