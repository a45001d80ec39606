#include "xml/EngineDocument.h"

#include <analytics/Settings.h>

#include "xml/EngineForm.h"
#include "xml/Nodes.h"
#include "xml/Reader.h"

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

// Moves it into the container, from the namespace that its own document binds to the prefix into ours.
void Adopt(DocumentNode& handle, DocumentNode& container)
{
    const std::string prefix(xml::QName(xml::NodeOf(&handle).name()).prefix);
    const std::string space(xml::NamespaceAt(xml::NodeOf(&handle), prefix));
    container.AddChild(&handle);
    pugi::xml_node moved = xml::NodeOf(&handle);
    for (pugi::xml_node node = space == kNamespace ? pugi::xml_node() : moved; node;
         node = xml::Next(node, moved))
        for (pugi::xml_attribute attribute : node.attributes())
            if (xml::IsDeclaration(attribute) && attribute.value() == space)
                xml::Require(attribute.set_value(kNamespace));
    if (xml::NamespaceAt(moved.parent(), prefix) == xml::NamespaceAt(moved, prefix))
        moved.remove_attribute(xml::Declaration(moved, prefix));
}
} // namespace

EngineDocument::EngineDocument()
{
    const bool parsed = ParseString(Skeleton());
    assert(parsed);
    m_engines.Handle(Root(*Content()).first_child().internal_object());
    m_rules.Handle(Root(*Content()).last_child().internal_object());
}

void EngineDocument::TakeRules(ProfileDoc& from, const std::string& ruleId)
{
    for (const auto& handle : Own(from.SelectRules(ruleId)))
        Adopt(*handle, m_rules);
}

void EngineDocument::MarkActive(const std::string& ruleId)
{
    const pugi::xml_node mark =
        xml::AppendElement(xml::NodeOf(&m_rules), kActivePrefix + std::string(":") + kActiveRule);
    xml::SetAttribute(mark, kType, ruleId);
}

void EngineDocument::TakeEngine(ProfileDoc& from, const std::string& engineId)
{
    const std::unique_ptr<DocumentNode> present(SelectEngine(engineId));
    const std::unique_ptr<DocumentNode> module(from.SelectEngine(engineId));
    if (present == nullptr && module != nullptr)
        Adopt(*module, m_engines);
}

void EngineDocument::TakeEngines(ProfileDoc& from)
{
    for (const auto& handle : Own(from.SelectNodes("//" + Settings::OnvifPrefix() + ":" + kModule, nullptr)))
        TakeEngine(from, handle->GetProperty(kType));
}

} // namespace analytics
