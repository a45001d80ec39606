#include "xml/Path.h"

#include "xml/Tree.h"

#include <algorithm>
#include <array>

namespace analytics::xml
{

// One evaluation.
class Path::Walk
{
  public:
    Walk(const Path& path, Tree& tree, const Visit& visit) : m_steps(path.m_steps), m_visit(visit)
    {
        for (std::size_t i = 0; i < m_steps.size(); ++i)
            if (!m_steps[i].prefix.empty())
                m_spaces[i] = &tree.NamespaceOf(m_steps[i].prefix);
    }

    // A path with a prefix that the document doesn't bind finds nothing.
    bool Bound() const
    {
        return std::none_of(m_spaces.begin(), m_spaces.end(),
                            [](const std::string* space) { return space != nullptr && space->empty(); });
    }

    // False once the visitor has seen enough.
    bool Down(xmlNode* parent, std::size_t step) const
    {
        const bool last = step + 1 == m_steps.size();
        for (xmlNode* child = parent->children; child != nullptr; child = child->next)
            if (Matches(step, child) && !(last ? m_visit(child) : Down(child, step + 1)))
                return false;
        return true;
    }

    void Anywhere(xmlNode* top) const
    {
        for (xmlNode* node = NextElement(top, top); node != nullptr; node = NextElement(node, top))
            if (EndsAt(node, top) && !m_visit(node))
                return;
    }

  private:
    // Whether the steps lead from somewhere below `top` to the node.
    bool EndsAt(const xmlNode* node, const xmlNode* top) const
    {
        std::size_t step = m_steps.size();
        while (step > 0 && node != top && Matches(step - 1, node))
        {
            --step;
            node = node->parent;
        }
        return step == 0;
    }

    bool Matches(std::size_t step, const xmlNode* node) const
    {
        const Step& wanted = m_steps[step];
        const bool named =
            IsElement(node) && View(node->name) == wanted.name &&
            (m_spaces[step] == nullptr ? node->ns == nullptr
                                       : node->ns != nullptr && View(node->ns->href) == *m_spaces[step]);
        return named && (wanted.anyOf.empty() ||
                         std::any_of(wanted.anyOf.begin(), wanted.anyOf.end(),
                                     [node](const Comparison& one) { return Holds(one, node); }));
    }

    static bool Holds(const Comparison& comparison, const xmlNode* node)
    {
        if (comparison.attribute)
        {
            const xmlNode* attribute = FindAttribute(node, comparison.name);
            return attribute != nullptr && Content(attribute) == comparison.value;
        }
        const xmlNode* child = node->children;
        while (child != nullptr &&
               !(IsElement(child, {}, comparison.name) && Content(child) == comparison.value))
            child = child->next;
        return child != nullptr;
    }

    const std::vector<Step>& m_steps;
    const Visit& m_visit;
    std::array<const std::string*, kMaxSteps> m_spaces = {}; // null: none
};

void Path::ForEach(Tree& tree, xmlNode* context, const Visit& visit) const
{
    const Walk walk(*this, tree, visit);
    xmlNode* start = m_fromRoot ? tree.Top() : context;
    if (!walk.Bound())
        return;
    if (m_anywhere)
        walk.Anywhere(start);
    else
        walk.Down(start, 0);
}

} // namespace analytics::xml
