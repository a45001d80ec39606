#include "Output.h"

#include "Failure.h"
#include "Text.h"
#include "XmlDocument.h"
#include "documents/DocumentJson.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace client
{
namespace
{

void Put(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

// For people: a flag is "yes" or nothing.
std::string Cell(const Value& value)
{
    if (const auto* text = std::get_if<std::string>(&value))
        return Printable(*text);
    if (const auto* number = std::get_if<long long>(&value))
        return std::to_string(*number);
    const auto* flag = std::get_if<bool>(&value);
    return flag != nullptr && *flag ? "yes" : "";
}

std::string Lines(const std::vector<std::vector<std::string>>& cells)
{
    std::vector<std::size_t> widths(cells.front().size(), 0);
    for (const auto& row : cells)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], Width(row[i]));
    std::string result;
    for (const auto& row : cells)
    {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] - Width(row[i]) + 2, ' ');
        line.erase(line.find_last_not_of(' ') + 1);
        result += line + '\n';
    }
    return result;
}

std::string Drawn(const List& list)
{
    std::vector<std::vector<std::string>> cells(list.rows.size() + 1);
    for (std::size_t i = 0; i < list.columns.size(); ++i)
    {
        if (list.columns[i].title.empty())
            continue;
        cells[0].push_back(list.columns[i].title);
        for (std::size_t row = 0; row < list.rows.size(); ++row)
            cells[row + 1].push_back(Cell(list.rows[row][i]));
    }
    return Lines(cells);
}

} // namespace

std::string Readable(const std::string& document)
{
    try
    {
        return XmlDocument(document, "").Indented();
    }
    catch (const Failure&)
    {
        return Trimmed(document);
    }
}

void Output::Table(const List& list, const std::string& none) const
{
    if (m_json)
        Put(JsonLine(AsJson(list)) + '\n');
    else
        Put(list.rows.empty() ? Printable(none) + '\n' : Drawn(list));
}

void Output::Result(const Record& record, const std::string& sentence) const
{
    Put((m_json ? JsonLine(AsJson(record)) : Printable(sentence)) + '\n');
}

void Output::Report(Record record, const std::string& sentence, const std::string& key,
                    const List& list) const
{
    record.emplace_back(key, Raw{AsJson(list)});
    Result(record, sentence);
    if (!m_json && !list.rows.empty())
        Put(Drawn(list));
}

void Output::Document(Record record, const DocumentModel* model, const std::string& document) const
{
    if (m_json)
    {
        const bool none = Trimmed(document).empty();
        record.emplace_back("document", none               ? Value()
                                        : model == nullptr ? Value(document)
                                                           : Value(Raw{ToJson(*model, document)}));
        Put(JsonLine(AsJson(record)) + '\n');
        return;
    }
    const std::string text = Readable(document);
    Put((isatty(STDOUT_FILENO) == 1 ? Printable(text, true) : text) + '\n');
}

} // namespace client
