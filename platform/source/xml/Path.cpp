#include "xml/Path.h"

#include "xml/Namespaces.h"
#include "xml/Reader.h"

#include <algorithm>
#include <unordered_map>

namespace analytics::xml
{
namespace
{
constexpr std::size_t kMostKept = 512;
constexpr char kAny[] = "*";

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsNameCharacter(char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.'; }
} // namespace

bool IsPlainName(std::string_view name)
{
    return !name.empty() && IsLetter(name.front()) && std::ranges::all_of(name, IsNameCharacter);
}

// Each operation takes what it reads from the front of the query.
class PathReader
{
  public:
    explicit PathReader(std::string_view query) : m_rest(query) {}

    bool Read(Path& path)
    {
        const bool relative = Take(".");
        path.m_anywhere = Take("//");
        const bool slash = path.m_anywhere || Take("/");
        path.m_fromRoot = slash && !relative;
        if (relative && !slash)
            return false;
        do
        {
            if (Take("@"))
                return TakeName(path.m_attribute) && m_rest.empty();
            if (!TakeStep(path.m_steps.emplace_back()))
                return false;
        } while (Take("/"));
        return m_rest.empty();
    }

  private:
    bool Take(std::string_view text)
    {
        const bool present = m_rest.starts_with(text);
        if (present)
            m_rest.remove_prefix(text.size());
        return present;
    }

    void SkipSpace()
    {
        while (Take(" "))
        {
        }
    }

    bool TakeName(std::string& name)
    {
        const auto* const end = std::find_if_not(m_rest.begin(), m_rest.end(), IsNameCharacter);
        name.assign(m_rest.begin(), end);
        m_rest.remove_prefix(name.size());
        if (name.empty() && Take(kAny))
            name = kAny;
        return IsPlainName(name) || name == kAny;
    }

    bool TakeLiteral(std::string& value)
    {
        const char quote = m_rest.empty() ? '\0' : m_rest.front();
        const std::size_t end =
            quote == '"' || quote == '\'' ? m_rest.find(quote, 1) : std::string_view::npos;
        if (end == std::string_view::npos)
            return false;
        value = m_rest.substr(1, end - 1);
        m_rest.remove_prefix(end + 1);
        return true;
    }

    bool TakeStep(Path::Step& step)
    {
        if (!TakeName(step.name))
            return false;
        if (step.name != kAny && Take(":"))
        {
            step.prefix.swap(step.name);
            if (!TakeName(step.name))
                return false;
        }
        step.any = step.name == kAny;
        return !Take("[") || TakeCondition(step);
    }

    bool TakeComparison(Path::Comparison& comparison)
    {
        SkipSpace();
        comparison.attribute = Take("@");
        if (!TakeName(comparison.name) || comparison.name == kAny)
            return false;
        SkipSpace();
        if (!Take("="))
            return false;
        SkipSpace();
        return TakeLiteral(comparison.value);
    }

    bool TakeCondition(Path::Step& step)
    {
        do
        {
            if (!TakeComparison(step.anyOf.emplace_back()))
                return false;
            SkipSpace();
        } while (Take("or "));
        return Take("]");
    }

    std::string_view m_rest;
};

// One evaluation.
class Path::Walk
{
  public:
    Walk(const Path& path, const Visit& visit) : m_path(path), m_steps(path.m_steps), m_visit(visit) {}

    // A path with a prefix that the document doesn't bind finds nothing.
    bool Bind(Tree& tree)
    {
        const auto isPlain = [](const Step& step) { return step.prefix.empty(); };
        if (std::ranges::all_of(m_steps, isPlain))
            return true;
        for (const Step& step : m_steps)
            m_bindings.push_back({isPlain(step) ? std::string_view() : FirstBinding(tree, step.prefix)});
        return std::ranges::equal(m_steps, m_bindings,
                                  [&](const Step& step, const Binding& binding)
                                  { return isPlain(step) || !binding.wanted.empty(); });
    }

    // False once the visitor has seen enough.
    bool Down(pugi::xml_node from, std::size_t step)
    {
        if (step == m_steps.size())
            return Show(from);
        for (pugi::xml_node child = from.first_child(); child; child = child.next_sibling())
            if (Matches(step, child) && !Down(child, step + 1))
                return false;
        return true;
    }

    // From `first`, which is `top` or its only element.
    void Anywhere(pugi::xml_node top, pugi::xml_node first)
    {
        for (pugi::xml_node node = first; node; node = Next(node, first))
            if (IsElement(node) && EndsAt(node, top) && !Show(node))
                return;
    }

  private:
    // The namespace of a step, and that of the node that it was last compared with: most have the prefix of
    // the one before, below the same parent.
    struct Binding
    {
        std::string_view wanted;
        pugi::xml_node parent = {};
        std::string_view prefix = {};
        std::string_view space = {}; // of the prefix at the parent
    };

    bool Show(pugi::xml_node element)
    {
        if (m_path.m_attribute.empty())
            return m_visit({element, {}});
        if (m_path.m_attribute != kAny)
        {
            const pugi::xml_attribute attribute = PlainAttribute(element, m_path.m_attribute);
            return !attribute || m_visit({element, attribute});
        }
        return std::ranges::all_of(element.attributes(),
                                   [&](pugi::xml_attribute attribute) {
                                       return IsDeclaration(attribute) || m_visit({element, attribute});
                                   });
    }

    // Whether the steps lead from somewhere below `top` to the node.
    bool EndsAt(pugi::xml_node node, pugi::xml_node top)
    {
        std::size_t step = m_steps.size();
        while (step > 0 && node != top && Matches(step - 1, node))
        {
            --step;
            node = node.parent();
        }
        return step == 0;
    }

    bool Matches(std::size_t step, pugi::xml_node node)
    {
        const Step& wanted = m_steps[step];
        const bool any = wanted.any;
        if ((!any && wanted.prefix.empty() && wanted.name != node.name()) || !IsElement(node))
            return false;
        const QName name(node.name());
        if (!any && name.local != wanted.name)
            return false;
        Binding& binding = m_bindings.empty() ? m_plain : m_bindings[step];
        if (!(any && wanted.prefix.empty()) && SpaceOf(node, name, binding) != binding.wanted)
            return false;
        return wanted.anyOf.empty() ||
               std::ranges::any_of(wanted.anyOf, [&](const Comparison& one) { return Holds(one, node); });
    }

    std::string_view SpaceOf(pugi::xml_node node, const QName& name, Binding& last)
    {
        if (const pugi::xml_attribute declaration = Declaration(node, name.prefix))
            return declaration.value();
        if (node.parent() != last.parent || name.prefix != last.prefix)
            last = {last.wanted, node.parent(), name.prefix, NamespaceAt(node.parent(), name.prefix)};
        return last.space;
    }

    bool Holds(const Comparison& comparison, pugi::xml_node node)
    {
        if (comparison.attribute)
        {
            const pugi::xml_attribute attribute = PlainAttribute(node, comparison.name);
            return attribute && attribute.value() == comparison.value;
        }
        return std::ranges::any_of(node.children(),
                                   [&](pugi::xml_node child)
                                   {
                                       return IsElement(child) && child.name() == comparison.name &&
                                              NamespaceAt(child, "").empty() &&
                                              Content(child) == comparison.value;
                                   });
    }

    const Path& m_path;
    const std::vector<Step>& m_steps;
    const Visit& m_visit;
    std::vector<Binding> m_bindings; // of the steps; none if no step has a prefix
    Binding m_plain = {};
};

std::string Match::Text() const { return attribute ? attribute.value() : Content(element); }

std::optional<Path> Path::Read(std::string_view query)
{
    std::optional<Path> path(std::in_place);
    if (!PathReader(query).Read(*path))
        path.reset();
    return path;
}

const Path& Path::Of(const std::string& query)
{
    static const Path kNowhere = Read("xmlns:none").value();
    thread_local std::unordered_map<std::string, std::optional<Path>> kept;
    auto found = kept.find(query);
    if (found == kept.end())
    {
        if (kept.size() >= kMostKept)
            kept.clear();
        found = kept.emplace(query, Read(query)).first;
    }
    return found->second ? *found->second : kNowhere;
}

void Path::ForEach(Tree& tree, pugi::xml_node context, const Visit& visit) const
{
    Walk walk(*this, visit);
    const pugi::xml_node start = m_fromRoot ? tree.document : context;
    if (!walk.Bind(tree))
        return;
    if (m_anywhere)
        walk.Anywhere(start, start == tree.document ? Root(tree) : start);
    else
        walk.Down(start, 0);
}

} // namespace analytics::xml
