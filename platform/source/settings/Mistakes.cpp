#include "settings/Mistakes.h"

#include "xml/Reader.h"
#include "xml/Text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <map>
#include <system_error>
#include <utility>

namespace analytics::platform
{
namespace
{

bool IsAddress(const std::string& text)
{
    in6_addr any = {};
    return inet_pton(AF_INET, text.c_str(), &any) == 1 ||
           inet_pton(AF_INET6, text.substr(0, text.find('%')).c_str(), &any) == 1;
}

// One walk over a document.
class Walk
{
  public:
    Walk(const std::string& path, const std::string& text, std::span<const Known> known)
        : m_path(path), m_lines(text), m_known(known)
    {
    }

    void Element(pugi::xml_node element, const std::string& parent)
    {
        const std::string path = parent + element.name();
        const Known* const known = Find(path);
        const std::string shown = std::string("<") + element.name() + '>';
        if (known == nullptr)
            return Add(element, shown + " isn't known here; correct its name or remove it");
        const int line = m_lines.Of(element);
        const auto [first, isFirst] =
            m_first.try_emplace(path + ' ' + element.attribute("name").value(), line);
        if (!isFirst && known->takes != Takes::Several)
            Add(element, shown + " is there already in line " + std::to_string(first->second) +
                             ", which counts; remove one of them");
        Value(element, *known, shown, xml::Content(element));
        for (const pugi::xml_attribute attribute : element.attributes())
        {
            const Known* const knownToo = Find(path + '@' + attribute.name());
            const std::string name = std::string("the attribute ") + attribute.name() + " of " + shown;
            if (knownToo == nullptr)
                Add(element, name + " isn't known; correct its name or remove it");
            else
                Value(element, *knownToo, name, attribute.value());
        }
        for (const pugi::xml_node child : element.children())
            if (child.type() == pugi::node_element)
                Element(child, path + '/');
    }
    std::vector<std::string> Mistakes() && { return std::move(m_mistakes); }

  private:
    const Known* Find(const std::string& path) const
    {
        const auto known = std::ranges::find(m_known, path, &Known::path);
        return known == m_known.end() ? nullptr : &*known;
    }
    void Value(pugi::xml_node element, const Known& known, const std::string& name,
               const std::string& content)
    {
        const std::string text(xml::Trimmed(content));
        if (text.empty())
            return;
        const std::string found = name + " is \"" + text.substr(0, 40) + "\"; it takes a ";
        std::int64_t number = 0;
        const bool isNumber = xml::ReadInteger(text, number) == std::errc();
        if (known.takes == Takes::Number && (!isNumber || number < known.least || number > known.most))
            Add(element, found + "whole number from " + std::to_string(known.least) + " to " +
                             std::to_string(known.most) + (isNumber ? "" : ", and the default is used"));
        if (known.takes == Takes::Address && !IsAddress(text))
            Add(element, found + "numeric IPv4 or IPv6 address, such as 127.0.0.1");
    }
    void Add(pugi::xml_node element, const std::string& sentence)
    {
        m_mistakes.push_back(m_path + ':' + std::to_string(m_lines.Of(element)) + ": " + sentence);
    }

    const std::string m_path;
    const xml::Lines m_lines;
    const std::span<const Known> m_known;
    std::map<std::string, int> m_first; // line of an element, by its path and its attribute "name"
    std::vector<std::string> m_mistakes;
};

} // namespace

std::vector<std::string> MistakesIn(const std::string& path, const std::string& text, pugi::xml_node element,
                                    std::span<const Known> known)
{
    Walk walk(path, text, known);
    if (element)
        walk.Element(element, "");
    return std::move(walk).Mistakes();
}

} // namespace analytics::platform
