#include "Json.h"

#include "Values.h"

#include <algorithm>
#include <set>
#include <vector>

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

// Whatever walks a value calls itself for each level. The parser doesn't, and keeps nothing here: with what
// it keeps it looks through the whole of a list at the end of each item.
class Check
{
  public:
    bool operator()(int depth, Json::parse_event_t event, const Json& value)
    {
        constexpr int kMaxDepth = 256; // as in XML
        m_names.resize(static_cast<std::size_t>(depth));
        const bool begins =
            event == Json::parse_event_t::array_start || event == Json::parse_event_t::object_start;
        if (begins && depth >= kMaxDepth)
            throw JsonError("the values are nested too deeply", 0);
        if (begins)
            m_names.emplace_back();
        else if (event == Json::parse_event_t::key && !m_names.back().insert(value.get<std::string>()).second)
            throw JsonError("'" + value.get<std::string>() +
                                "' stands more than once in an object, and only one of them counts",
                            0);
        return false;
    }

  private:
    std::vector<std::set<std::string>> m_names; // of the objects around, outermost first
};

} // namespace

Json ParseJson(const std::string& text)
{
    try
    {
        const Json nothing = Json::parse(text, Check());
        return Json::parse(text);
    }
    catch (const Json::out_of_range&)
    {
        throw JsonError("a number in it is too large", 0);
    }
    catch (const Json::parse_error& error)
    {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
        throw JsonError("this isn't JSON", 1 + std::count(text.begin(), end, '\n'));
    }
}

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
