#include "Model.h"

#include "Text.h"
#include "XmlDocument.h"

#include <charconv>

namespace client
{
namespace
{

std::optional<Model::Bounds> Between(const std::string& min, const std::string& max)
{
    const std::optional<long long> low = Integer(min);
    const std::optional<long long> high = Integer(max);
    if (!low || !high)
        return std::nullopt;
    return Model::Bounds{*low, *high};
}

} // namespace

void Model::Learn(const xmlNode* element)
{
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next)
        attributes.insert(reinterpret_cast<const char*>(attribute->name));
    if (const auto advised = Between(AttributeOf(element, "min"), AttributeOf(element, "max")))
        bounds = advised;
    if (const auto advised =
            Between(TextOf(Child(element, "minPoints")), TextOf(Child(element, "maxPoints"))))
        points = advised;
    const std::vector<xmlNode*> found = Children(element);
    if (found.empty() && !TextOf(element).empty())
    {
        text = text || !Integer(TextOf(element));
        number = !text;
    }
    for (const xmlNode* child : found)
        children[Name(child)].Learn(child);
}

std::optional<long long> Integer(const std::string& text)
{
    std::string digits = Trimmed(text);
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-')
        digits.erase(0, 1);
    long long value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

} // namespace client
