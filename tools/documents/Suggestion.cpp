#include "documents/Suggestion.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace client
{
namespace
{

std::size_t Distance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j)
        {
            const bool same = std::tolower(static_cast<unsigned char>(a[i])) ==
                              std::tolower(static_cast<unsigned char>(b[j]));
            const std::size_t changed = diagonal + (same ? 0 : 1);
            diagonal = std::exchange(row[j + 1], std::min({changed, row[j] + 1, row[j + 1] + 1}));
        }
    }
    return row.back();
}

std::vector<std::string> NamesOf(const Element& parent)
{
    std::vector<std::string> names;
    for (const Element& child : parent.children)
        if (std::find(names.begin(), names.end(), child.name) == names.end())
            names.push_back(child.name);
    return names;
}

std::string Joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

const Element* ParentOf(const std::string& name, const Element& from)
{
    if (from.Child(name) != nullptr)
        return &from;
    for (const Element& child : from.children)
        if (const Element* const found = ParentOf(name, child))
            return found;
    return nullptr;
}

} // namespace

std::string Nearest(const std::string& word, const std::vector<std::string>& words)
{
    constexpr std::size_t kFar = 3;
    std::string nearest;
    std::size_t least = std::min(kFar, word.size() / 2 + 1);
    for (const std::string& candidate : words)
        if (const std::size_t distance = Distance(word, candidate); distance < least)
        {
            least = distance;
            nearest = candidate;
        }
    return nearest;
}

std::string Suggestion(const std::string& name, const Element& parent, const Element& root)
{
    const Element* const home = ParentOf(name, root);
    if (home != nullptr && home != &parent)
        return "; it belongs in <" + home->name + ">";
    if (home != nullptr)
    {
        std::vector<std::string> keys;
        for (const Element& child : parent.children)
            keys.push_back(child.key.empty() && !child.value.empty() ? child.value.front().value : child.key);
        return "; known are " + Joined(keys);
    }
    const std::vector<std::string> names = NamesOf(parent);
    if (const std::string near = Nearest(name, names); !near.empty())
        return "; did you mean <" + near + ">?";
    return names.empty() ? "" : "; it may hold " + Joined(names);
}

std::string SuggestedAttribute(const std::string& name, const Element& element)
{
    std::vector<std::string> names;
    for (const Field& field : element.attributes)
        names.push_back(field.name);
    const std::string near = Nearest(name, names);
    return near.empty() ? "" : "; did you mean '" + near + "'?";
}

} // namespace client
