#include "Changes.h"

#include "Model.h"
#include "XmlDocument.h"

#include <set>

namespace client
{
namespace
{

bool Same(const std::string& a, const std::string& b)
{
    const std::optional<long long> number = Integer(a);
    return a == b || (number && number == Integer(b));
}

class Comparison
{
  public:
    std::vector<Change> changes;

    void Compare(const xmlNode* sent, const xmlNode* stored, const std::string& path)
    {
        for (const xmlAttr* attribute = sent->properties; attribute != nullptr; attribute = attribute->next)
        {
            const std::string name = reinterpret_cast<const char*>(attribute->name);
            const bool kept = xmlHasProp(stored, attribute->name) != nullptr;
            const std::string before = AttributeOf(sent, name);
            const std::string after = kept ? AttributeOf(stored, name) : kAbsent;
            if (attribute->ns == nullptr && !Same(before, after))
                Add(sent, path + "/@" + name, before, after);
        }
        const bool leaf = Children(sent).empty() && Children(stored).empty();
        if (leaf && !Same(TextOf(sent), TextOf(stored)))
            Add(sent, path, TextOf(sent), TextOf(stored));
        std::set<std::string> names;
        for (const xmlNode* child : Children(sent))
            names.insert(Name(child));
        for (const xmlNode* child : Children(stored))
            names.insert(Name(child));
        for (const std::string& name : names)
            CompareAll(sent, stored, path, name);
    }

  private:
    void Add(const xmlNode* node, const std::string& path, const std::string& sent, const std::string& stored)
    {
        changes.push_back({xmlGetLineNo(node), path, sent, stored});
    }

    void CompareAll(const xmlNode* sent, const xmlNode* stored, const std::string& path,
                    const std::string& name)
    {
        const std::vector<xmlNode*> before = Children(sent, name);
        std::vector<xmlNode*> after = Children(stored, name);
        const bool many = before.size() > 1 || after.size() > 1;
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            const std::string place = path + "/" + name + (many ? "[" + std::to_string(i + 1) + "]" : "");
            if (const xmlNode* const partner = Take(after, before[i]))
                Compare(before[i], partner, place);
            else
                Add(before[i], place, Shown(before[i]), kAbsent);
        }
        for (const xmlNode* added : after)
            Add(sent, path + "/" + name, kAbsent, Shown(added));
    }

    // Takes out of `nodes` the one of the same name, else the first.
    static const xmlNode* Take(std::vector<xmlNode*>& nodes, const xmlNode* like)
    {
        if (nodes.empty())
            return nullptr;
        auto partner = nodes.begin();
        for (auto node = nodes.begin(); node != nodes.end(); ++node)
            if (TextOf(Child(*node, "name")) == TextOf(Child(like, "name")))
            {
                partner = node;
                break;
            }
        const xmlNode* const taken = *partner;
        nodes.erase(partner);
        return taken;
    }

    static std::string Shown(const xmlNode* node)
    {
        if (Children(node).empty())
            return TextOf(node).empty() ? "(empty)" : TextOf(node);
        const std::string name = TextOf(Child(node, "name"));
        return name.empty() ? "(an element)" : "(the element named " + name + ")";
    }
};

} // namespace

std::vector<Change> Changes(const xmlNode* sent, const xmlNode* stored)
{
    Comparison comparison;
    comparison.Compare(sent, stored, "/" + Name(sent));
    return comparison.changes;
}

} // namespace client
