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
// The first element behind `from` and below `top` of that name whose attribute `attribute` is `value`.
xmlNode* FindBehind(xmlNode* from, const xmlNode* top, std::string_view space, std::string_view name,
                    const char* attribute, const std::string& value)
{
    xmlNode* node = xml::NextElement(from, top);
    while (node != nullptr &&
           !(xml::IsElement(node, space, name) && xml::Attribute(node, attribute) == value))
        node = xml::NextElement(node, top);
    return node;
}

// What FindBehind() finds of that type in a document.
class FormSearch
{
  public:
    FormSearch(xml::Tree* tree, const char* name, const std::string& type) : m_name(name), m_type(type)
    {
        if (tree == nullptr || type.empty())
            return;
        m_space = tree->NamespaceOf(Settings::OnvifPrefix());
        m_top = m_space.empty() ? nullptr : tree->Top();
    }

    xmlNode* First() const { return m_top == nullptr ? nullptr : Behind(m_top); }

    std::vector<xmlNode*> All() const
    {
        std::vector<xmlNode*> found;
        for (xmlNode* node = First(); node != nullptr; node = Behind(node))
            found.push_back(node);
        return found;
    }

  private:
    xmlNode* Behind(xmlNode* from) const { return FindBehind(from, m_top, m_space, m_name, kType, m_type); }

    const char* m_name;
    const std::string& m_type;
    std::string m_space;
    xmlNode* m_top = nullptr;
};

DocumentNode* HandleOf(xmlNode* node) { return node == nullptr ? nullptr : new DocumentNode(node); }

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
    return xml::HandlesOf(FormSearch(Content(), kRule, ruleId).All());
}

DocumentNode* ProfileDoc::SelectRule(const std::string& ruleId)
{
    return HandleOf(FormSearch(Content(), kRule, ruleId).First());
}

void ProfileDoc::DeleteRules(const std::string& ruleId)
{
    const std::vector<xmlNode*> rules = FormSearch(Content(), kRule, ruleId).All();
    for (auto rule = rules.rbegin(); rule != rules.rend(); ++rule)
        DocumentNode(*rule).Unlink(true);
}

bool ProfileDoc::RuleIsActive(const std::string& ruleId)
{
    xmlNode* const top = Content() == nullptr ? nullptr : Content()->Top();
    return top != nullptr && FindBehind(top, top, kActiveNamespace, kActiveRule, kType, ruleId) != nullptr;
}

DocumentNode* ProfileDoc::SelectEngine(const std::string& engineId)
{
    return HandleOf(FormSearch(Content(), kModule, engineId).First());
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
