#include <analytics/ProfileDoc.h>

#include <analytics/Settings.h>

#include "xml/EngineForm.h"
#include "xml/Nodes.h"
#include "xml/Reader.h"
#include "xml/Text.h"

#include <algorithm>
#include <limits>

namespace analytics
{
using namespace engineform;

namespace
{
bool Is(pugi::xml_node node, std::string_view name, std::string_view space)
{
    const xml::QName own(node.name());
    return own.local == name && xml::NamespaceAt(node, own.prefix) == space;
}

// Shows the elements of that name whose attribute is `value`, `top` or below it, in document order until
// `visit` returns false. A value may hold quotes, which a query couldn't.
void ForEachWith(pugi::xml_node top, std::string_view space, std::string_view name, const char* attribute,
                 const std::string& value, const xml::Path::Visit& visit)
{
    for (pugi::xml_node node = top; node; node = xml::Next(node, top))
        if (value == node.attribute(attribute).value() && Is(node, name, space) && !visit({node, {}}))
            return;
}

// The same in the namespace of the engine form.
std::vector<xml::Match> FormElements(xml::Tree* tree, const char* name, const char* attribute,
                                     const std::string& value,
                                     std::size_t most = std::numeric_limits<std::size_t>::max())
{
    std::vector<xml::Match> found;
    if (tree == nullptr || value.empty())
        return found;
    const std::string_view space = FirstBinding(*tree, Settings::OnvifPrefix());
    if (space.empty())
        return found;
    ForEachWith(Root(*tree), space, name, attribute, value,
                [&](const xml::Match& match)
                {
                    found.push_back(match);
                    return found.size() < most;
                });
    return found;
}

xml::Match FirstOf(const std::vector<xml::Match>& matches)
{
    return matches.empty() ? xml::Match() : matches.front();
}

std::string Step(const char* name) { return Settings::OnvifPrefix() + ":" + name; }

std::string ItemQry(const char* item, bool inParameters)
{
    return inParameters ? ".//" + Step(kParameters) + "/" + Step(item) : Step(item);
}

// The first item of that name: anywhere; from a context in Parameters or, without `inParameters`, among its
// children.
pugi::xml_node FindSimpleItem(xml::Tree* tree, const std::string& name, const DocumentNode* context,
                              bool inParameters)
{
    const std::string_view space =
        tree == nullptr ? std::string_view() : FirstBinding(*tree, Settings::OnvifPrefix());
    pugi::xml_node found;
    if (space.empty() || name.empty())
        return found;
    const pugi::xml_node top = context == nullptr ? Root(*tree) : xml::NodeOf(context);
    const auto stands = [&](pugi::xml_node item)
    {
        const pugi::xml_node parent = item.parent();
        return context == nullptr ||
               (inParameters ? item != top && parent != top && Is(parent, kParameters, space)
                             : parent == top);
    };
    ForEachWith(top, space, kSimpleItem, kName, name,
                [&](const xml::Match& item) { return !(stands(item.element) && (found = item.element)); });
    return found;
}

int Number(pugi::xml_node node, const char* attribute, int defaultValue)
{
    return xml::ToInt(node.attribute(attribute).value(), defaultValue);
}
} // namespace

ProfileDoc::ProfileDoc() = default;
ProfileDoc::~ProfileDoc() = default;

std::vector<DocumentNode*> ProfileDoc::SelectRules(const std::string& ruleId)
{
    return xml::HandlesOf(FormElements(Content(), kRule, kType, ruleId));
}

DocumentNode* ProfileDoc::SelectRule(const std::string& ruleId)
{
    return xml::HandleOf(FirstOf(FormElements(Content(), kRule, kType, ruleId, 1)));
}

void ProfileDoc::DeleteRules(const std::string& ruleId)
{
    const std::vector<xml::Match> rules = FormElements(Content(), kRule, kType, ruleId);
    for (auto rule = rules.rbegin(); rule != rules.rend(); ++rule)
        rule->element.parent().remove_child(rule->element);
}

bool ProfileDoc::RuleIsActive(const std::string& ruleId)
{
    bool marked = false;
    if (Content() != nullptr && !ruleId.empty())
        ForEachWith(Root(*Content()), kActiveNamespace, kActiveRule, kType, ruleId,
                    [&marked](const xml::Match&) { return !(marked = true); });
    return marked;
}

DocumentNode* ProfileDoc::SelectEngine(const std::string& engineId)
{
    return xml::HandleOf(FirstOf(FormElements(Content(), kModule, kType, engineId, 1)));
}

std::string ProfileDoc::ElementItemQry(bool inParameters) { return ItemQry(kElementItem, inParameters); }
std::string ProfileDoc::SimpleItemQry(bool inParameters) { return ItemQry(kSimpleItem, inParameters); }

DocumentNode* ProfileDoc::SelectElementItemNode(DocumentNode* context, bool inParameters)
{
    return SelectNode(ElementItemQry(inParameters), context);
}

int ProfileDoc::GetSimpleItemValue(const std::string& name, int defaultValue, DocumentNode* context,
                                   bool inParameters)
{
    return Number(FindSimpleItem(Content(), name, context, inParameters), kValue, defaultValue);
}

void ProfileDoc::SetSimpleItemValue(const std::string& name, int value, DocumentNode* context)
{
    if (const pugi::xml_node item = FindSimpleItem(Content(), name, context, true))
        xml::SetAttribute(item, kValue, std::to_string(value));
}

void ProfileDoc::GetPoints(std::vector<types::Point>& points, const std::string& query, DocumentNode* context)
{
    xml::ForEach(Content(), query, context,
                 [&points](const xml::Match& point)
                 {
                     points.emplace_back(Number(point.element, "x", 0), Number(point.element, "y", 0));
                     return true;
                 });
}

bool ProfileDoc::GetLine(types::Point (&line)[2], const std::string& query, DocumentNode* context)
{
    std::vector<types::Point> points;
    GetPoints(points, query, context);
    if (points.size() < 2)
        return false;
    std::copy_n(points.begin(), 2, line);
    return true;
}

} // namespace analytics
