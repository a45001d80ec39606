#pragma once

#include <libxml/tree.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace analytics::xml
{

class Tree;

// A location path of the plain forms that nearly every query has: child elements by their names, from the
// context ("a/p:b", "./a"), from the root ("/a"), or from anywhere below either ("//a/b", ".//a"), each
// with a condition at most, such as [@id="x" or name='y']. It finds what XPath finds, by walking the tree.
class Path
{
  public:
    // Nothing for a query of another form.
    static std::optional<Path> Read(std::string_view query);

    // Shows the matches in document order until `visit` returns false. It may not change the tree.
    using Visit = std::function<bool(xmlNode*)>;
    void ForEach(Tree& tree, xmlNode* context, const Visit& visit) const;

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
        std::string prefix;
        std::string name;
        std::vector<Comparison> anyOf; // empty: no condition
    };

    static constexpr std::size_t kMaxSteps = 8;

    bool m_fromRoot = false;
    bool m_anywhere = false;
    std::vector<Step> m_steps;
};

} // namespace analytics::xml
