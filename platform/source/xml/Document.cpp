#include <analytics/Document.h>

#include "request/DocumentLimit.h"
#include "xml/Nodes.h"
#include "xml/Path.h"
#include "xml/Reader.h"
#include "xml/Text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace analytics
{
namespace
{
std::vector<xml::Match> All(xml::Tree* tree, const std::string& query, const DocumentNode* context)
{
    std::vector<xml::Match> matches;
    xml::ForEach(tree, query, context,
                 [&matches](const xml::Match& match)
                 {
                     matches.push_back(match);
                     return true;
                 });
    return matches;
}

xml::Match First(xml::Tree* tree, const std::string& query, const DocumentNode* context)
{
    xml::Match first;
    xml::ForEach(tree, query, context,
                 [&first](const xml::Match& match)
                 {
                     first = match;
                     return false;
                 });
    return first;
}

// Checks the text. Templates, default configurations and profiles come again and again: each thread keeps the
// texts that have passed last, and doesn't check them a second time.
std::optional<xml::Survey> Survey(const std::string& text)
{
    using Passed = std::pair<std::string, xml::Survey>;
    constexpr std::size_t kMost = 16;
    constexpr std::size_t kMostBytes = 16'384; // of one
    thread_local std::vector<Passed> kept;     // the one last used at the end
    const auto found = std::ranges::find(kept, text, &Passed::first);
    if (found != kept.end())
    {
        std::rotate(found, found + 1, kept.end());
        return kept.back().second;
    }
    xml::SyntaxError error;
    const auto survey = xml::Check(text, error);
    if (survey && text.size() <= kMostBytes)
    {
        if (kept.size() == kMost)
            kept.erase(kept.begin());
        kept.emplace_back(text, *survey);
    }
    return survey;
}
} // namespace

Document::Document() = default;
Document::~Document() = default;

bool Document::ParseString(const std::string& xml)
{
    m_tree.reset();
    auto tree = std::make_unique<xml::Tree>();
    const auto survey = Survey(xml);
    if (survey && platform::AdmitElements(survey->elements) && xml::Build(xml, *survey, tree->document))
        m_tree = std::move(tree);
    return m_tree != nullptr;
}

std::string Document::DumpToString()
{
    if (m_tree == nullptr)
        return {};
    std::string text = xml::kXmlDeclaration;
    for (const pugi::xml_node node : m_tree->document.children())
        if (node.type() != pugi::node_element || xml::IsElement(node))
            (text += xml::Print(node)) += '\n';
    return text;
}

DocumentNode* Document::SelectNode(const std::string& query, DocumentNode* context)
{
    return xml::HandleOf(First(Content(), query, context));
}

std::vector<DocumentNode*> Document::SelectNodes(const std::string& query, DocumentNode* context)
{
    return xml::HandlesOf(All(Content(), query, context));
}

std::string Document::GetSingleValue(const std::string& query, DocumentNode* context)
{
    return First(Content(), query, context).Text();
}

int Document::GetSingleValue(const std::string& query, int defaultValue, DocumentNode* context)
{
    return xml::ToInt(GetSingleValue(query, context), defaultValue);
}

void Document::DeleteNodes(const std::string& query, DocumentNode* context)
{
    std::vector<xml::Match> matches = All(Content(), query, context);
    // Backwards, so that a match inside another one goes first.
    for (auto match = matches.rbegin(); match != matches.rend(); ++match)
        if (match->attribute)
            match->element.remove_attribute(match->attribute);
        else
            match->element.parent().remove_child(match->element);
}

xml::Tree* Document::Content() const { return m_tree.get(); }

} // namespace analytics
