// Path queries on documents: the first line of an input is a query, the rest the document. What is left
// after the matches were read, changed and removed is written, and can be read again.

#include "Expect.h"
#include "Oracle.h"

#include <analytics/Document.h>

#include <algorithm>
#include <memory>

namespace
{
using fuzzing::Expect;

// Queries are the program's own: a wide one on a large document costs what it costs.
constexpr std::size_t kLongestQuery = 80;
constexpr std::size_t kLargestDocument = 2000;
constexpr std::ptrdiff_t kMostPredicates = 2;

void Touch(analytics::Document& document, const std::string& query)
{
    for (analytics::DocumentNode* const match : document.SelectNodes(query, nullptr))
    {
        const std::unique_ptr<analytics::DocumentNode> node(match);
        const std::string value = node->GetValue();
        node->SetProperty("seen", value);
        Expect(node->GetProperty("seen").empty() || node->GetProperty("seen") == value,
               "a property is what it was set to", value);
        const std::unique_ptr<analytics::DocumentNode> child(node->AddNewChild("new", value));
        Expect(child == nullptr || child->GetValue() == value, "a new element has its text", value);
    }
}

void ExpectReadable(analytics::Document& document)
{
    const std::string text = document.DumpToString();
    analytics::Document again;
    Expect(again.ParseString(text), "what is written can be read", text);
    Expect(again.DumpToString() == text, "what is read is written the same", text);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input = fuzzing::Text(data, size);
    const std::size_t line = std::min(input.find('\n'), input.size());
    const std::string query = input.substr(0, line);
    const std::string text = line == input.size() ? std::string() : input.substr(line + 1);
    if (query.size() > kLongestQuery || text.size() > kLargestDocument ||
        std::ranges::count(query, '[') > kMostPredicates)
        return -1; // not kept

    fuzzing::CompareReading(text);
    analytics::Document document;
    if (!document.ParseString(text))
        return 0;
    ExpectReadable(document);
    fuzzing::CompareQuery(text, query);
    document.GetSingleValue(query, nullptr);
    document.GetSingleValue(query, 7, nullptr);
    Touch(document, query);
    ExpectReadable(document);
    document.DeleteNodes(query, nullptr);
    if (const std::unique_ptr<analytics::DocumentNode> root(document.SelectNode("/*", nullptr));
        root != nullptr)
        ExpectReadable(document);
    return 0;
}
