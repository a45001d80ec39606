#include "Output.h"
#include "Text.h"

#include <cstdio>

namespace client
{
namespace
{

std::string Quoted(const std::string& value)
{
    std::string result = "\"";
    for (std::string_view text = value; !text.empty();)
    {
        const char32_t c = TakeCharacter(text);
        if (c == U'"' || c == U'\\')
            result += '\\';
        if (c >= 0x20 && (c < 0x7F || c > 0x9F))
        {
            AppendCharacter(result, c);
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
        result += escape;
    }
    return result + '"';
}

template <class Member>
std::string Joined(char open, std::size_t count, char close, const Member& member)
{
    std::string result(1, open);
    for (std::size_t i = 0; i < count; ++i)
        result += (i == 0 ? "" : ", ") + member(i);
    return result + close;
}

std::string ValueJson(const Value& value)
{
    if (const auto* text = std::get_if<std::string>(&value))
        return Quoted(*text);
    if (const auto* number = std::get_if<long long>(&value))
        return std::to_string(*number);
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag ? "true" : "false";
    if (const auto* raw = std::get_if<Raw>(&value))
        return raw->json;
    return "null";
}

} // namespace

std::string Json(const Record& record)
{
    return Joined('{', record.size(), '}',
                  [&](std::size_t i)
                  { return Quoted(record[i].first) + ": " + ValueJson(record[i].second); });
}

std::string Json(const List& list)
{
    return Joined('[', list.rows.size(), ']',
                  [&](std::size_t i)
                  {
                      Record record;
                      for (std::size_t column = 0; column < list.columns.size(); ++column)
                          record.emplace_back(list.columns[column].key, list.rows[i][column]);
                      return Json(record);
                  });
}

} // namespace client
