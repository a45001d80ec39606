#include "Check.h"

#include "XmlDocument.h"

#include <algorithm>

namespace client
{
namespace
{

class Checker
{
  public:
    std::vector<Finding> findings;

    void Walk(const xmlNode* element, const Model& model)
    {
        Points(element);
        m_points.push_back(model.points ? model.points : Allowed());
        CheckAttributes(element, model);
        CheckNumber(element, model);
        // Of an element that is empty wherever it is known, nothing can be said.
        const bool known = !model.children.empty() || model.number;
        for (const xmlNode* child : Children(element))
        {
            const auto found = model.children.find(Name(child));
            if (found != model.children.end())
                Walk(child, found->second);
            else if (known)
                Add(child, "<" + Name(child) + "> isn't known in <" + Name(element) + "> and is ignored" +
                               Known(model.children));
        }
        m_points.pop_back();
    }

  private:
    void Add(const xmlNode* node, const std::string& text) { findings.push_back({xmlGetLineNo(node), text}); }

    std::optional<Model::Bounds> Allowed() const { return m_points.empty() ? std::nullopt : m_points.back(); }

    static std::string Known(const std::map<std::string, Model>& children)
    {
        std::string names;
        for (const auto& [name, model] : children)
            names += (names.empty() ? "; it may hold " : ", ") + name;
        return names;
    }

    void CheckAttributes(const xmlNode* element, const Model& model)
    {
        for (const xmlAttr* attribute = element->properties; attribute != nullptr;
             attribute = attribute->next)
        {
            const std::string name = reinterpret_cast<const char*>(attribute->name);
            if (attribute->ns == nullptr && name != "min" && name != "max" &&
                !model.attributes.contains(name))
                Add(element,
                    "the attribute '" + name + "' isn't known in <" + Name(element) + "> and is ignored");
        }
    }

    void CheckNumber(const xmlNode* element, const Model& model)
    {
        if (!model.number)
            return;
        const std::string text = TextOf(element);
        const std::optional<long long> value = Integer(text);
        if (!value)
            Add(element,
                "<" + Name(element) + "> holds '" + text + "', which is no integer and counts as missing");
        else if (model.bounds && (*value < model.bounds->min || *value > model.bounds->max))
            Add(element, "<" + Name(element) + "> is " + text + ", the advised values are " +
                             std::to_string(model.bounds->min) + " to " + std::to_string(model.bounds->max));
    }

    // A zone is told by where it stands: in a list of them.
    void Points(const xmlNode* element)
    {
        const std::string list = element->parent->type == XML_ELEMENT_NODE ? Name(element->parent) : "";
        if (!Allowed() || (list != "rois" && list != "excludeZones"))
            return;
        const xmlNode* const vertices = Child(element, "vertices");
        const long long count =
            vertices == nullptr ? 0 : static_cast<long long>(Children(vertices, "vertex").size());
        if (count >= Allowed()->min && count <= Allowed()->max)
            return;
        Add(element, "the zone '" + TextOf(Child(element, "name")) + "' has " + std::to_string(count) +
                         (count == 1 ? " point" : " points") + ", too " +
                         (count < Allowed()->min ? "few" : "many") + "; " + std::to_string(Allowed()->min) +
                         " to " + std::to_string(Allowed()->max) + " are advised");
    }

    std::vector<std::optional<Model::Bounds>> m_points;
};

} // namespace

std::vector<Finding> Check(const xmlNode* element, const Model& model)
{
    Checker checker;
    checker.Walk(element, model);
    std::stable_sort(checker.findings.begin(), checker.findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return checker.findings;
}

} // namespace client
