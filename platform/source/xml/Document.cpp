#include <analytics/Document.h>

#include "request/DocumentLimit.h"
#include "threads/LruCache.h"
#include "xml/Nodes.h"
#include "xml/Reader.h"
#include "xml/Text.h"

#include <atomic>
#include <optional>
#include <utility>

namespace analytics
{
namespace
{
// Checks the text. Templates, default configurations and profiles come again and again: the texts that have
// passed last are kept, and not checked a second time. A large one has to come twice on end to be kept, which
// what a client sends seldom does.
std::optional<xml::Survey> Survey(const std::string& text)
{
    constexpr std::size_t kLarge = std::size_t{64} << 10U;
    constexpr std::size_t kMostBytes = std::size_t{2} << 20U; // of all
    static platform::LruCache<std::string, xml::Survey> passed(64, kMostBytes);
    static std::atomic<std::size_t> lastLarge = 0;
    if (auto found = passed.Find(text))
        return found;
    xml::SyntaxError error;
    auto survey = xml::Check(text, error);
    const std::size_t hash = text.size() <= kLarge ? 0 : std::hash<std::string>()(text);
    if (survey && (hash == 0 || lastLarge.exchange(hash) == hash) && text.size() <= kMostBytes)
        passed.Put(text, *survey, text.size());
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
    if (!survey || !platform::AdmitElements(survey->elements) ||
        !xml::Build(xml, *survey, tree->document, true))
        return false;
    tree->plain = !survey->innerSpaces && xml::DeclaresPlainly(Root(*tree));
    m_tree = std::move(tree);
    return true;
}

std::string Document::DumpToString()
{
    if (m_tree == nullptr)
        return {};
    std::string text = xml::kXmlDeclaration;
    for (const pugi::xml_node node : m_tree->document.children())
        if (node.type() != pugi::node_element || xml::IsElement(node))
            xml::Print(node, text) += '\n';
    return text;
}

DocumentNode* Document::SelectNode(const std::string& query, DocumentNode* context)
{
    return xml::HandleOf(xml::First(Content(), query, context));
}

std::vector<DocumentNode*> Document::SelectNodes(const std::string& query, DocumentNode* context)
{
    return xml::HandlesOf(xml::All(Content(), query, context));
}

std::string Document::GetSingleValue(const std::string& query, DocumentNode* context)
{
    return xml::First(Content(), query, context).Text();
}

int Document::GetSingleValue(const std::string& query, int defaultValue, DocumentNode* context)
{
    return xml::ToInt(GetSingleValue(query, context), defaultValue);
}

void Document::DeleteNodes(const std::string& query, DocumentNode* context)
{
    xml::Remove(xml::All(Content(), query, context));
}

xml::Tree* Document::Content() const { return m_tree.get(); }

} // namespace analytics
