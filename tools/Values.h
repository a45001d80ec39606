#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace client
{

// What a command has found out, before it is written as a table, a sentence or JSON.
// Ready-made JSON stands in results for programs only.
struct Raw
{
    std::string json;
};

using Value = std::variant<std::monostate, bool, long long, std::string, Raw>;
using Row = std::vector<Value>;

// A column has a key for programs and a title for people; one without a title isn't shown to people.
struct Column
{
    std::string key;
    std::string title;
};

struct List
{
    std::vector<Column> columns;
    std::vector<Row> rows;
};

using Record = std::vector<std::pair<std::string, Value>>;

} // namespace client
