#pragma once

#include "xml/Namespaces.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace analytics::xml
{

// What a path leads to.
struct Match
{
    pugi::xml_node element;
    pugi::xml_attribute attribute; // of the element, where that is meant
    std::string Text() const;
};

// Whether it is the name of an element, without a prefix and in ASCII.
bool IsPlainName(std::string_view name);

// A location path: elements by name, from the context ("a/p:b", "./a"), from the root ("/a") or from anywhere
// below either ("//a/b", ".//a"), each with a condition at most ([@id="x" or name='y']), and an attribute at
// the end, if any ("a/@id"). A name may be "*". It means what it means in XPath 1.0; a prefix stands for the
// namespace that the document first binds to it. Any thread.
class Path
{
  public:
    // Nothing for a query of another form.
    static std::optional<Path> Read(std::string_view query);
    // The path of a query, kept for its next use; one that leads nowhere for another form.
    static std::shared_ptr<const Path> Of(const std::string& query);

    // Shows the matches in document order until `visit` returns false. It may not change the tree.
    using Visit = std::function<bool(const Match&)>;
    void ForEach(const Tree& tree, pugi::xml_node context, const Visit& visit) const;

  private:
    friend class PathReader;
    class Walk;

    // Of an attribute or of a child element; no namespace.
    struct Comparison
    {
        bool attribute = false;
        std::string name;
        std::string value;
    };
    struct Step
    {
        bool any = false; // of the names
        std::string text; // as it stands in the path: prefix and name
        std::string prefix;
        std::string name;
        std::vector<Comparison> anyOf; // empty: no condition
    };

    bool m_fromRoot = false;
    bool m_anywhere = false;
    std::vector<Step> m_steps;
    std::string m_attribute; // empty: the path ends at elements
};

} // namespace analytics::xml
