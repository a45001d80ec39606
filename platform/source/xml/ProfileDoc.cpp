#include <analytics/ProfileDoc.h>

#include <analytics/Settings.h>

#include "xml/EngineForm.h"
#include "xml/Query.h"
#include "xml/Text.h"
#include "xml/Tree.h"

#include <algorithm>

namespace analytics
{
using namespace engineform;

namespace
{
// The elements below `top` of that name whose attribute `attribute` is `value`.
std::vector<xmlNode*> Find(const xmlNode* top, std::string_view space, std::string_view name,
                           const char* attribute, const std::string& value)
{
    std::vector<xmlNode*> found;
    for (xmlNode* node = xml::NextElement(const_cast<xmlNode*>(top), top); node != nullptr;
         node = xml::NextElement(node, top))
        if (xml::IsElement(node, space, name) && xml::Attribute(node, attribute) == value)
            found.push_back(node);
    return found;
}

std::vector<xmlNode*> FindInForm(xml::Tree* tree, const char* name, const std::string& type)
{
    if (tree == nullptr || type.empty())
        return {};
    const std::string& space = tree->NamespaceOf(Settings::OnvifPrefix());
    return space.empty() ? std::vector<xmlNode*>() : Find(tree->Top(), space, name, kType, type);
}

DocumentNode* FirstHandle(const std::vector<xmlNode*>& nodes)
{
    return nodes.empty() ? nullptr : new DocumentNode(nodes.front());
}

std::string Step(const char* name) { return Settings::OnvifPrefix() + ":" + name; }

std::string ItemQry(const char* item, bool inParameters)
{
    return inParameters ? ".//" + Step(kParameters) + "/" + Step(item) : Step(item);
}

// Compares the names here: a name may hold quotes, which a query couldn't.
xmlNode* FindSimpleItem(xml::Tree* tree, const std::string& name, const DocumentNode* context,
                        bool inParameters)
{
    static const std::string kInParameters = ItemQry(kSimpleItem, true);
    static const std::string kBelow = ItemQry(kSimpleItem, false);
    xmlNode* found = nullptr;
    xml::ForEach(tree, inParameters ? kInParameters : kBelow, context,
                 [&](xmlNode* item)
                 {
                     if (xml::Attribute(item, kName) == name)
                         found = item;
                     return found == nullptr;
                 });
    return found;
}

int Number(const xmlNode* node, const char* attribute, int defaultValue)
{
    return xml::ToInt(xml::Attribute(node, attribute), defaultValue);
}
} // namespace

ProfileDoc::ProfileDoc() = default;
ProfileDoc::~ProfileDoc() = default;

std::vector<DocumentNode*> ProfileDoc::SelectRules(const std::string& ruleId)
{
    return xml::HandlesOf(FindInForm(Content(), kRule, ruleId));
}

DocumentNode* ProfileDoc::SelectRule(const std::string& ruleId)
{
    return FirstHandle(FindInForm(Content(), kRule, ruleId));
}

void ProfileDoc::DeleteRules(const std::string& ruleId)
{
    const std::vector<xmlNode*> rules = FindInForm(Content(), kRule, ruleId);
    for (auto rule = rules.rbegin(); rule != rules.rend(); ++rule)
        DocumentNode(*rule).Unlink(true);
}

bool ProfileDoc::RuleIsActive(const std::string& ruleId)
{
    return Content() != nullptr &&
           !Find(Content()->Top(), kActiveNamespace, kActiveRule, kType, ruleId).empty();
}

DocumentNode* ProfileDoc::SelectEngine(const std::string& engineId)
{
    return FirstHandle(FindInForm(Content(), kModule, engineId));
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
    const xmlNode* item = FindSimpleItem(Content(), name, context, inParameters);
    return item == nullptr ? defaultValue : Number(item, kValue, defaultValue);
}

void ProfileDoc::SetSimpleItemValue(const std::string& name, int value, DocumentNode* context)
{
    if (xmlNode* item = FindSimpleItem(Content(), name, context, true))
        DocumentNode(item).SetProperty(kValue, value);
}

void ProfileDoc::GetPoints(std::vector<types::Point>& points, const std::string& query, DocumentNode* context)
{
    xml::ForEach(Content(), query, context,
                 [&points](const xmlNode* node)
                 {
                     points.emplace_back(Number(node, "x", 0), Number(node, "y", 0));
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
