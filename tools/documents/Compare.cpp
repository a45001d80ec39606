#include "documents/Compare.h"

#include "Text.h"
#include "XmlDocument.h"
#include "documents/Shape.h"

#include <set>

namespace client
{
namespace
{

bool Same(const std::string& a, const std::string& b)
{
    const std::optional<long long> number = Integer(a);
    return Trimmed(a) == Trimmed(b) || (number && number == Integer(b));
}

// Neither a value nor anything that may hold one.
bool IsEmpty(const pugi::xml_node& node) { return TextOf(node).empty() && node.first_attribute().empty(); }

std::string Shown(const pugi::xml_node& node)
{
    if (Children(node).empty())
        return TextOf(node).empty() ? "(empty)" : TextOf(node);
    const std::string name = TextOf(node.child("name"));
    return name.empty() ? "(an element)" : "(the element named " + name + ")";
}

class Comparison
{
  public:
    explicit Comparison(const XmlDocument& sent) : m_sent(sent) {}
    std::vector<Change> changes;

    void Compare(const pugi::xml_node& sent, const pugi::xml_node& stored, const std::string& path)
    {
        for (const pugi::xml_attribute& attribute : sent.attributes())
        {
            const std::string name = attribute.name();
            const pugi::xml_attribute kept = stored.attribute(name.c_str());
            // A behavior may be called by either of its identifiers.
            // A scene without a name leaves the profile the one that it has.
            const bool nameless = name == "name" && *attribute.value() == '\0';
            const bool ours =
                name == "id" || name.find(':') != std::string::npos || name == "xmlns" || nameless;
            if (!ours && (kept.empty() || !Same(attribute.value(), kept.value())))
                Add(sent, path + "/@" + name, attribute.value(), kept.empty() ? kAbsent : kept.value());
        }
        const bool leaf = Children(sent).empty() && Children(stored).empty();
        if (leaf && !Same(TextOf(sent), TextOf(stored)))
            Add(sent, path, TextOf(sent), TextOf(stored));
        std::set<std::string> names;
        for (const pugi::xml_node& child : Children(sent))
            if (names.insert(child.name()).second)
                CompareAll(Children(sent, child.name()), Children(stored, child.name()),
                           path + "/" + child.name());
    }

  private:
    void Add(const pugi::xml_node& node, const std::string& path, const std::string& sent,
             const std::string& stored)
    {
        changes.push_back({m_sent.LineOf(node), path, sent, stored});
    }

    void CompareAll(const Nodes& before, Nodes after, const std::string& path)
    {
        const bool many = before.size() > 1 || after.size() > 1;
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            const std::string place = path + (many ? "[" + std::to_string(i + 1) + "]" : "");
            if (const pugi::xml_node partner = Take(after, before[i]))
                Compare(before[i], partner, place);
            else if (!IsEmpty(before[i]))
                Add(before[i], place, Shown(before[i]), kAbsent);
        }
    }

    // Takes out of `nodes` the one of the same name, else the first.
    static pugi::xml_node Take(Nodes& nodes, const pugi::xml_node& like)
    {
        if (nodes.empty())
            return {};
        auto partner = nodes.begin();
        for (auto node = nodes.begin(); node != nodes.end(); ++node)
            if (TextOf(node->child("name")) == TextOf(like.child("name")))
            {
                partner = node;
                break;
            }
        const pugi::xml_node taken = *partner;
        nodes.erase(partner);
        return taken;
    }

    const XmlDocument& m_sent;
};

} // namespace

std::vector<Change> Changes(const DocumentModel& model, const std::string& sent, const std::string& stored)
{
    const XmlDocument before(sent, "the document that was sent");
    const XmlDocument after(Trimmed(stored).empty() ? "<" + model.root.name + "/>" : stored,
                            "the stored document");
    Comparison comparison(before);
    comparison.Compare(RootOf(model, before.Root()), RootOf(model, after.Root()), "/" + model.root.name);
    return comparison.changes;
}

std::vector<Change> Differences(const DocumentModel& model, const std::string& a, const std::string& b)
{
    const auto valuesOf = [&model](const std::string& document)
    {
        const Json normalised = Normalised(model, document);
        return normalised.is_null() ? Json::object() : normalised.flatten();
    };
    const Json before = valuesOf(a);
    const Json after = valuesOf(b);
    std::vector<Change> changes;
    for (const auto& [field, value] : before.items())
        if (const Json other = after.value(field, Json()); other != value)
            changes.push_back({0, field, value.dump(), other.is_null() ? kAbsent : other.dump()});
    for (const auto& [field, value] : after.items())
        if (!before.contains(field))
            changes.push_back({0, field, kAbsent, value.dump()});
    return changes;
}

bool SameMeaning(const DocumentModel& model, const std::string& a, const std::string& b)
{
    return Normalised(model, a) == Normalised(model, b);
}

bool IsIdle(const DocumentModel& model, const std::string& document)
{
    return Normalised(model, document).is_null();
}

} // namespace client
