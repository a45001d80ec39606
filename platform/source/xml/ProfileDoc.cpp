#include <analytics/ProfileDoc.h>

#include <analytics/Settings.h>

#include "xml/EngineForm.h"
#include "xml/Text.h"
#include "xml/Tree.h"

#include <memory>

namespace analytics
{
using namespace engineform;

namespace
{
using Nodes = std::vector<std::unique_ptr<DocumentNode>>;

Nodes Own(const std::vector<DocumentNode*>& handles) { return Nodes(handles.begin(), handles.end()); }

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
std::unique_ptr<DocumentNode> FindSimpleItem(ProfileDoc& doc, const std::string& name, DocumentNode* context,
                                             bool inParameters)
{
    for (auto& item : Own(doc.SelectNodes(doc.SimpleItemQry(inParameters), context)))
        if (item->GetProperty(kName) == name)
            return std::move(item);
    return nullptr;
}

types::Point PointOf(const DocumentNode& node)
{
    return {node.GetProperty("x", 0), node.GetProperty("y", 0)};
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
    const std::unique_ptr<DocumentNode> item = FindSimpleItem(*this, name, context, inParameters);
    return item == nullptr ? defaultValue : item->GetProperty(kValue, defaultValue);
}

void ProfileDoc::SetSimpleItemValue(const std::string& name, int value, DocumentNode* context)
{
    if (const std::unique_ptr<DocumentNode> item = FindSimpleItem(*this, name, context, true))
        item->SetProperty(kValue, value);
}

void ProfileDoc::GetPoints(std::vector<types::Point>& points, const std::string& query, DocumentNode* context)
{
    for (const auto& node : Own(SelectNodes(query, context)))
        points.push_back(PointOf(*node));
}

bool ProfileDoc::GetLine(types::Point (&line)[2], const std::string& query, DocumentNode* context)
{
    const Nodes nodes = Own(SelectNodes(query, context));
    if (nodes.size() < 2)
        return false;
    line[0] = PointOf(*nodes[0]);
    line[1] = PointOf(*nodes[1]);
    return true;
}

} // namespace analytics
