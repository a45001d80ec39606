#include "Json.h"

#include "Values.h"

namespace client
{
namespace
{

Json AsJson(const Value& value)
{
    const auto convert = [](const auto& held) -> Json
    {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate>)
            return nullptr;
        else if constexpr (std::is_same_v<Held, Raw>)
            return held.json;
        else
            return held;
    };
    return std::visit(convert, value);
}

} // namespace

std::string JsonLine(const Json& json) { return json.dump(-1, ' ', true, Json::error_handler_t::replace); }

Json AsJson(const Record& record)
{
    Json object = Json::object();
    for (const auto& [name, value] : record)
        object[name] = AsJson(value);
    return object;
}

Json AsJson(const List& list)
{
    Json rows = Json::array();
    for (const Row& row : list.rows)
    {
        Json object = Json::object();
        for (std::size_t column = 0; column < list.columns.size(); ++column)
            if (!list.columns[column].key.empty())
                object[list.columns[column].key] = AsJson(row[column]);
        rows.push_back(std::move(object));
    }
    return rows;
}

} // namespace client
