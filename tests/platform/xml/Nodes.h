#pragma once

#include <analytics/Document.h>

#include <memory>
#include <string>
#include <vector>

// Handles that end by themselves, and the questions that most tests ask.
namespace analytics::test
{

using Node = std::unique_ptr<DocumentNode>;

inline Node Select(Document& doc, const std::string& query, const Node& context = nullptr)
{
    return Node(doc.SelectNode(query, context.get()));
}

inline std::vector<Node> SelectAll(Document& doc, const std::string& query, const Node& context = nullptr)
{
    const std::vector<DocumentNode*> handles = doc.SelectNodes(query, context.get());
    return {handles.begin(), handles.end()};
}

// The texts of all matches, with a space between.
inline std::string Texts(Document& doc, const std::string& query, const Node& context = nullptr)
{
    std::string texts;
    for (const Node& node : SelectAll(doc, query, context))
        texts += (texts.empty() ? "" : " ") + node->GetValue();
    return texts;
}

// The dump without its declaration and final line break.
inline std::string Body(Document& doc)
{
    const std::string text = doc.DumpToString();
    const std::size_t begin = text.find("?>\n");
    return begin == std::string::npos ? text : text.substr(begin + 3, text.size() - begin - 4);
}

inline std::string Repeat(const std::string& text, int count)
{
    std::string result;
    result.reserve(text.size() * static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

} // namespace analytics::test
