#include "xml/EngineDocument.h"

#include <analytics/Settings.h>

#include "xml/EngineForm.h"
#include "xml/Memory.h"
#include "xml/Tree.h"

#include <cassert>
#include <memory>

namespace analytics
{
using namespace engineform;

namespace
{
constexpr char kRoot[] = "VideoAnalyticsConfiguration";
constexpr char kActivePrefix[] = "va";

using Nodes = std::vector<std::unique_ptr<DocumentNode>>;

// Deletes the handles as well if there is no memory for the list of their owners.
Nodes Own(const std::vector<DocumentNode*>& handles)
{
    Nodes owned;
    try
    {
        owned.reserve(handles.size());
    }
    catch (...)
    {
        for (const DocumentNode* handle : handles)
            delete handle;
        throw;
    }
    for (DocumentNode* handle : handles)
        owned.emplace_back(handle);
    return owned;
}

std::string Skeleton()
{
    const std::string prefix = Settings::OnvifPrefix();
    const std::string root = prefix + ":" + kRoot;
    return "<" + root + " xmlns:" + prefix + "=\"" + kNamespace + "\" xmlns:" + kActivePrefix + "=\"" +
           kActiveNamespace + "\"><" + prefix + ":" + kEngines + "/><" + prefix + ":" + Settings::RulesTag() +
           "/></" + root + ">";
}

// Moves `taken` below `container`, from the namespace that its own document binds to the prefix into
// the one of this document.
void Adopt(xmlNode* taken, xmlNode* container)
{
    const std::string space(xml::View(taken->ns->href));
    for (xmlNode* node = taken; node != nullptr; node = xml::NextElement(node, taken))
        if (node->ns != nullptr && xml::View(node->ns->href) == space)
            node->ns = container->ns;
    xml::Move(taken, container);
}
} // namespace

EngineDocument::EngineDocument()
{
    const bool parsed = ParseString(Skeleton());
    assert(parsed);
    const xmlNode* root = xmlDocGetRootElement(Content()->Doc());
    m_engines = root->children;
    m_rules = root->last;
}

void EngineDocument::TakeRules(ProfileDoc& from, const std::string& ruleId)
{
    for (const auto& handle : Own(from.SelectRules(ruleId)))
        Adopt(xml::NodeOf(handle.get()), static_cast<xmlNode*>(m_rules));
}

void EngineDocument::MarkActive(const std::string& ruleId)
{
    auto* rules = static_cast<xmlNode*>(m_rules);
    const xml::Arena::Use use(Content()->Memory());
    xmlNs* space = xmlSearchNsByHref(rules->doc, rules, xml::Chars(kActiveNamespace));
    xmlNode* mark = xmlNewChild(rules, space, xml::Chars(kActiveRule), nullptr);
    xml::RequireMemory();
    DocumentNode(mark).SetProperty(kType, ruleId);
}

void EngineDocument::TakeEngine(ProfileDoc& from, const std::string& engineId)
{
    const std::unique_ptr<DocumentNode> present(SelectEngine(engineId));
    const std::unique_ptr<DocumentNode> module(from.SelectEngine(engineId));
    if (present == nullptr && module != nullptr)
        Adopt(xml::NodeOf(module.get()), static_cast<xmlNode*>(m_engines));
}

void EngineDocument::TakeEngines(ProfileDoc& from)
{
    for (const auto& handle : Own(from.SelectNodes("//" + Settings::OnvifPrefix() + ":" + kModule, nullptr)))
        TakeEngine(from, handle->GetProperty(kType));
}

} // namespace analytics
