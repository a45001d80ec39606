#include <analytics/Document.h>

#include "types/DocumentLimit.h"
#include "xml/Query.h"
#include "xml/Text.h"
#include "xml/Tree.h"
#include "xml/Writer.h"

namespace analytics
{
namespace
{
std::vector<xmlNode*> All(xml::Tree* tree, const std::string& query, const DocumentNode* context)
{
    std::vector<xmlNode*> matches;
    xml::ForEach(tree, query, context,
                 [&matches](xmlNode* node)
                 {
                     matches.push_back(node);
                     return true;
                 });
    return matches;
}

xmlNode* First(xml::Tree* tree, const std::string& query, const DocumentNode* context)
{
    xmlNode* first = nullptr;
    xml::ForEach(tree, query, context,
                 [&first](xmlNode* node)
                 {
                     first = node;
                     return false;
                 });
    return first;
}
} // namespace

Document::Document() = default;
Document::~Document() = default;

bool Document::ParseString(const std::string& xml)
{
    m_tree.reset();
    xml::SyntaxError error;
    const std::size_t elements = xml::MostElements(xml);
    if (!platform::AdmitElements(elements))
        return false;
    if (xml::DocPointer doc = xml::Parse(xml, error))
        m_tree = std::make_unique<xml::Tree>(std::move(doc), elements);
    return m_tree != nullptr;
}

std::string Document::DumpToString()
{
    if (m_tree == nullptr || m_tree->Overgrown())
        return {};
    return xml::Write(*m_tree->Doc());
}

DocumentNode* Document::SelectNode(const std::string& query, DocumentNode* context)
{
    xmlNode* node = First(Content(), query, context);
    return node == nullptr ? nullptr : new DocumentNode(node);
}

std::vector<DocumentNode*> Document::SelectNodes(const std::string& query, DocumentNode* context)
{
    return xml::HandlesOf(All(Content(), query, context));
}

std::string Document::GetSingleValue(const std::string& query, DocumentNode* context)
{
    const xmlNode* node = First(Content(), query, context);
    return node == nullptr ? std::string() : xml::Content(node);
}

int Document::GetSingleValue(const std::string& query, int defaultValue, DocumentNode* context)
{
    return xml::ToInt(GetSingleValue(query, context), defaultValue);
}

void Document::DeleteNodes(const std::string& query, DocumentNode* context)
{
    const std::vector<xmlNode*> matches = All(Content(), query, context);
    // Backwards, so that a match inside another one goes first.
    for (auto match = matches.rbegin(); match != matches.rend(); ++match)
        DocumentNode(*match).Unlink(true);
}

xml::Tree* Document::Content() const { return m_tree.get(); }

} // namespace analytics
