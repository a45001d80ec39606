#include "xml/Path.h"

#include "xml/Namespaces.h"
#include "xml/Reader.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>

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

    void SkipSpace() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(' '), m_rest.size())); }

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
        step.text = step.prefix + (step.prefix.empty() ? "" : ":") + step.name;
        return !Take("[") || TakeCondition(step);
    }

    bool TakeComparison(Path::Comparison& comparison)
    {
        SkipSpace();
        comparison.attribute = Take("@");
        if (!TakeName(comparison.name) || comparison.name == kAny)
            return false;
        SkipSpace();
        const bool equals = Take("=");
        SkipSpace();
        return equals && TakeLiteral(comparison.value);
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
    Walk(const Path& path, const Tree& tree, const Visit& visit)
        : m_path(path), m_plain(IsPlain(tree)), m_visit(visit)
    {
    }

    // A path with a prefix that the document doesn't bind finds nothing. In a plain one no element has it.
    bool Bind(const Tree& tree)
    {
        const auto bind = [&](const Step& step)
        {
            m_wanted.push_back(step.prefix.empty() ? step.prefix : FirstBinding(tree, step.prefix));
            return m_wanted.back().empty() == step.prefix.empty();
        };
        return m_plain || std::ranges::all_of(m_path.m_steps, bind);
    }

    // False once the visitor has seen enough.
    bool Down(pugi::xml_node from, std::size_t step)
    {
        if (step == m_path.m_steps.size())
            return Show(from);
        const Step& wanted = m_path.m_steps[step];
        const char* const name = m_plain && !wanted.any ? wanted.text.c_str() : nullptr; // that alone matches
        for (pugi::xml_node child = name == nullptr ? from.first_child() : from.child(name); child;
             child = name == nullptr ? child.next_sibling() : child.next_sibling(name))
            if (Matches(step, child) && !Down(child, step + 1))
                return false;
        return true;
    }

    // From `first`, which is `top` or its only element.
    void Anywhere(pugi::xml_node top, pugi::xml_node first)
    {
        ForEachNode(first, [&](pugi::xml_node node)
                    { return !EndsAt(node, top) || !IsElement(node) || Show(node); });
    }

  private:
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
        std::size_t step = m_path.m_steps.size();
        while (step > 0 && node != top && Matches(step - 1, node))
        {
            --step;
            node = node.parent();
        }
        return step == 0;
    }

    bool Matches(std::size_t step, pugi::xml_node node)
    {
        const Step& wanted = m_path.m_steps[step];
        if (m_plain && !wanted.any
                ? std::strcmp(wanted.text.c_str(), node.name()) != 0 || node.type() != pugi::node_element
                : !IsElement(node) || !HasName(node, step))
            return false;
        return wanted.anyOf.empty() ||
               std::ranges::any_of(wanted.anyOf, [&](const Comparison& one) { return Holds(one, node); });
    }

    bool HasName(pugi::xml_node element, std::size_t step)
    {
        const Step& wanted = m_path.m_steps[step];
        const QName name(element.name());
        if (m_plain || (wanted.any && wanted.prefix.empty()))
            return wanted.prefix.empty() || name.prefix == wanted.prefix;
        return (wanted.any || name.local == wanted.name) && SpaceAt(element, name.prefix) == m_wanted[step];
    }

    // NamespaceAt() that looks at each element once.
    std::string_view SpaceAt(pugi::xml_node element, std::string_view prefix)
    {
        const auto [found, isNew] = m_spaces.try_emplace({element.internal_object(), prefix});
        if (isNew)
            found->second = Declaration(element, prefix) || !element.parent()
                                ? NamespaceAt(element, prefix)
                                : SpaceAt(element.parent(), prefix);
        return found->second;
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
                                       return child.name() == comparison.name && IsElement(child) &&
                                              (m_plain || SpaceAt(child, "").empty()) &&
                                              Content(child) == comparison.value;
                                   });
    }

    const Path& m_path;
    const bool m_plain;
    const Visit& m_visit;
    // For a document that isn't plain: the namespaces of the steps, and of prefixes at elements.
    std::vector<std::string_view> m_wanted;
    std::map<std::pair<const void*, std::string_view>, std::string_view> m_spaces;
};

std::string Match::Text() const { return attribute ? attribute.value() : Content(element); }

std::optional<Path> Path::Read(std::string_view query)
{
    Path path;
    return PathReader(query).Read(path) ? std::optional(std::move(path)) : std::nullopt;
}

std::shared_ptr<const Path> Path::Of(const std::string& query)
{
    static std::mutex lock;
    static std::unordered_map<std::string, std::shared_ptr<const Path>> kept;
    const std::lock_guard hold(lock);
    if (kept.size() >= kMostKept && !kept.contains(query))
        kept.clear();
    auto& path = kept[query];
    if (path == nullptr)
        path = std::make_shared<const Path>(Read(query).value_or(Read("xmlns:none").value()));
    return path;
}

void Path::ForEach(const Tree& tree, pugi::xml_node context, const Visit& visit) const
{
    Walk walk(*this, tree, visit);
    const pugi::xml_node start = m_fromRoot ? tree.document.root() : context;
    if (!walk.Bind(tree))
        return;
    if (m_anywhere)
        walk.Anywhere(start, start == tree.document ? Root(tree) : start);
    else
        walk.Down(start, 0);
}

} // namespace analytics::xml
