#include <analytics/ProfileDoc.h>

#include <analytics/Settings.h>

#include "xml/EngineForm.h"
#include "xml/Nodes.h"
#include "xml/Reader.h"
#include "xml/Text.h"

#include <algorithm>

namespace analytics
{
using namespace engineform;

namespace
{
std::string Step(const char* name) { return Settings::OnvifPrefix() + ":" + name; }

std::string ItemQry(const char* item, bool inParameters)
{
    return inParameters ? ".//" + Step(kParameters) + "/" + Step(item) : Step(item);
}

// Whether the element has this value, which may hold quotes, unlike one in a query.
auto Bears(const char* attribute, const std::string& value)
{
    return [attribute, &value](const xml::Match& match)
    { return !value.empty() && value == match.element.attribute(attribute).value(); };
}

// The first item of that name: anywhere; from a context in Parameters or, without `inParameters`, among its
// children.
pugi::xml_node FindSimpleItem(xml::Tree* tree, const std::string& name, const DocumentNode* context,
                              bool inParameters)
{
    static const std::string kQueries[] = {ItemQry(kSimpleItem, false), ItemQry(kSimpleItem, true),
                                           "//" + Step(kSimpleItem)};
    return xml::First(tree,
                      kQueries[context == nullptr ? 2
                               : inParameters     ? 1
                                                  : 0],
                      context, Bears(kName, name))
        .element;
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
    return xml::HandlesOf(xml::All(Content(), "//" + Step(kRule), nullptr, Bears(kType, ruleId)));
}

DocumentNode* ProfileDoc::SelectRule(const std::string& ruleId)
{
    return xml::HandleOf(xml::First(Content(), "//" + Step(kRule), nullptr, Bears(kType, ruleId)));
}

void ProfileDoc::DeleteRules(const std::string& ruleId)
{
    xml::Remove(xml::All(Content(), "//" + Step(kRule), nullptr, Bears(kType, ruleId)));
}

bool ProfileDoc::RuleIsActive(const std::string& ruleId)
{
    bool marked = false;
    const auto isMark = [&ruleId](pugi::xml_node node)
    {
        const xml::QName name(node.name());
        return name.local == kActiveRule && ruleId == node.attribute(kType).value() &&
               xml::NamespaceAt(node, name.prefix) == kActiveNamespace;
    };
    if (Content() != nullptr && !ruleId.empty())
        xml::ForEachNode(Root(*Content()), [&](pugi::xml_node node) { return !(marked = isMark(node)); });
    return marked;
}

DocumentNode* ProfileDoc::SelectEngine(const std::string& engineId)
{
    return xml::HandleOf(xml::First(Content(), "//" + Step(kModule), nullptr, Bears(kType, engineId)));
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
    for (const auto& [point, none] : xml::All(Content(), query, context))
        points.emplace_back(Number(point, "x", 0), Number(point, "y", 0));
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
