#include "documents/Model.h"

#include "Text.h"

#include <algorithm>

namespace client
{
namespace
{

template <class Things>
auto Find(const Things& things, const std::string& name) -> decltype(&things.front())
{
    const auto found =
        std::find_if(things.begin(), things.end(), [&name](const auto& thing) { return thing.name == name; });
    return found == things.end() ? nullptr : &*found;
}

std::optional<long long> ConstantOf(const Element& root, const std::string& name)
{
    const Element* const child = root.Child(name);
    if (child == nullptr || child->value.empty())
        return std::nullopt;
    return child->value.front().Number();
}

} // namespace

long long Field::Number() const { return Integer(value).value(); }

const Element* Element::Child(const std::string& childName) const { return Find(children, childName); }

const Field* Element::Attribute(const std::string& attributeName) const
{
    return Find(attributes, attributeName);
}

std::optional<Bounds> DocumentModel::ZonePoints() const
{
    const std::optional<long long> min = ConstantOf(root, "minPoints");
    const std::optional<long long> max = ConstantOf(root, "maxPoints");
    return min && max ? std::optional(Bounds{*min, *max}) : std::nullopt;
}

bool DocumentModel::HasExcludeZones() const
{
    const Element* const zones = root.Child("excludeZones");
    return zones != nullptr && zones->form == Element::Form::List;
}

} // namespace client
