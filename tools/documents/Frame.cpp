#include "documents/Frame.h"

#include "Failure.h"
#include "Text.h"
#include "XmlDocument.h"

#include <xml/Text.h>

#include <algorithm>

namespace client
{
namespace
{

constexpr int kLargest = 100000;

bool TakeSide(std::string_view text, int& side)
{
    return analytics::xml::ReadInteger(text, side) == std::errc() && side >= 1 && side <= kLargest;
}

void Scale(const pugi::xml_node& coordinate, long long from, long long to)
{
    const std::optional<long long> value = Integer(TextOf(coordinate));
    if (!value)
        return;
    // To the nearest, halves away from 0.
    const long long twice = 2 * *value * to;
    const long long scaled = (twice + (twice < 0 ? -from : from)) / (2 * from);
    coordinate.text().set(std::clamp<long long>(scaled, INT_MIN, INT_MAX));
}

} // namespace

std::string Frame::Text() const { return std::to_string(width) + "x" + std::to_string(height); }

Frame ParseFrame(std::string_view text, const std::string& source)
{
    const std::size_t x = text.find('x');
    Frame frame;
    if (x == std::string_view::npos || !TakeSide(text.substr(0, x), frame.width) ||
        !TakeSide(text.substr(x + 1), frame.height))
        throw Failure(Exit::Usage,
                      source + ": '" + std::string(text) +
                          "' isn't a frame. Write its width and height in pixels, as in 320x240");
    return frame;
}

std::string Scaled(const std::string& document, const Frame& from, const Frame& to)
{
    const XmlDocument parsed(document, "the document");
    if (from == to)
        return document;
    pugi::xml_node root = parsed.Root();
    struct Walker : pugi::xml_tree_walker
    {
        Frame from, to;
        bool for_each(pugi::xml_node& node) override
        {
            if (std::string_view(node.name()) == "vertex")
            {
                Scale(node.child("x"), from.width, to.width);
                Scale(node.child("y"), from.height, to.height);
            }
            return true;
        }
    } walker;
    walker.from = from;
    walker.to = to;
    root.traverse(walker);
    return parsed.Text();
}

} // namespace client
