#include "store/ProfileDocument.h"

#include <analytics/ProfileDoc.h>
#include <analytics/Settings.h>

#include "xml/EngineForm.h"
#include "xml/Nodes.h"
#include "xml/Reader.h"

#include <set>

namespace analytics
{
using namespace engineform;

namespace
{
constexpr char kRoot[] = "VideoAnalyticsConfiguration";
constexpr char kActivePrefix[] = "va";

// A configuration, whose parts go into the document of a profile as text.
class StoredDocument : public ProfileDoc
{
  public:
    // Binds the prefix to the namespace of the engine form, if the text binds it to another.
    bool Parse(const std::string& text)
    {
        if (!ParseString(text))
            return false;
        const std::string space(FirstBinding(*Content(), m_prefix));
        if (space == kNamespace || space.empty())
            return true;
        Content()->plain = false;
        xml::ForEachNode(Root(*Content()),
                         [&space](pugi::xml_node node)
                         {
                             for (pugi::xml_attribute attribute : node.attributes())
                                 if (xml::IsDeclaration(attribute) && attribute.value() == space)
                                     xml::Require(attribute.set_value(kNamespace));
                             return true;
                         });
        return true;
    }

    // The text of the elements of that name whose type is accepted. One inside another goes with that.
    template <class Accept>
    std::string Text(const char* name, const Accept& accept)
    {
        std::string text;
        pugi::xml_node last;
        const auto stands = [&](const xml::Match& match)
        { return accept(match.element.attribute(kType).value()); };
        for (const auto& [element, none] : xml::All(Content(), "//" + m_prefix + ":" + name, nullptr, stands))
        {
            if (last && xml::Contains(last, element))
                continue;
            last = element;
            xml::Declarations missing = xml::Missing(element, {});
            if (const auto own = missing.find(m_prefix); own != missing.end() && own->second == kNamespace)
                missing.erase(own);
            xml::Declare(element, missing);
            xml::Print(element, text);
        }
        return text;
    }

  private:
    const std::string m_prefix = Settings::OnvifPrefix();
};

std::string ActiveMark(const std::string& ruleId)
{
    pugi::xml_document scratch;
    const pugi::xml_node mark = xml::AppendElement(scratch, kActivePrefix + std::string(":") + kActiveRule);
    xml::SetAttribute(mark, kType, ruleId);
    std::string text;
    return xml::Print(mark, text);
}

std::string Element(const std::string& name, const std::string& attributes, const std::string& content)
{
    return "<" + name + attributes + (content.empty() ? "/>" : ">" + content + "</" + name + ">");
}

std::string ProfileText(const std::string& modules, const std::string& rules)
{
    const std::string prefix = Settings::OnvifPrefix();
    const std::string spaces = " xmlns:" + prefix + "=\"" + kNamespace + "\" xmlns:" + kActivePrefix + "=\"" +
                               kActiveNamespace + "\"";
    return xml::kXmlDeclaration +
           Element(prefix + ":" + kRoot, spaces,
                   Element(prefix + ":" + kEngines, "", modules) +
                       Element(prefix + ":" + Settings::RulesTag(), "", rules)) +
           '\n';
}
} // namespace

std::string MergeProfile(const std::vector<StoredConfiguration>& configurations)
{
    std::string modules;
    std::string rules;
    std::set<std::string> types; // of the modules
    const auto isNew = [&types](const std::string& type)
    { return !type.empty() && types.insert(type).second; };
    bool empty = true;
    for (const StoredConfiguration& engine : configurations)
    {
        StoredDocument stored;
        if (engine.kind != EnginePlugin || !stored.Parse(engine.document))
            continue;
        modules +=
            stored.Text(kModule, [&](const std::string& type) { return type == engine.id && isNew(type); });
        empty = false;
    }
    for (const StoredConfiguration& rule : configurations)
    {
        StoredDocument stored;
        if (rule.kind != RulePlugin || !stored.Parse(rule.document))
            continue;
        rules += stored.Text(kRule, [&](const std::string& type) { return type == rule.id; });
        modules += stored.Text(kModule, isNew);
        if (rule.active)
            rules += ActiveMark(rule.id);
        empty = false;
    }
    return empty ? std::string() : ProfileText(modules, rules);
}

} // namespace analytics
