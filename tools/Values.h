#pragma once

#include "Json.h"

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
    Json json;
};

using Value = std::variant<std::monostate, bool, long long, std::string, Raw>;
using Row = std::vector<Value>;

// A column has a key for programs and a title for people, or one of them: the others don't see it.
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

Json AsJson(const Record& record); // an object
Json AsJson(const List& list);     // an array of objects

} // namespace client
