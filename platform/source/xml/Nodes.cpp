#include "xml/Nodes.h"

#include "xml/Reader.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace analytics::xml
{
namespace
{
constexpr std::uintptr_t kAttribute = 1;
constexpr std::size_t kLargeText = std::size_t{32} << 10U;

std::uintptr_t Bits(const DocumentNode& handle) { return reinterpret_cast<std::uintptr_t>(handle.Handle()); }

// Appends a node to a text, or without one counts the bytes.
struct Writer : pugi::xml_writer
{
    Writer(pugi::xml_node printed, std::string* result) : node(printed), text(result) {}

    std::size_t Run()
    {
        node.print(*this, "", pugi::format_raw, pugi::encoding_utf8);
        return bytes;
    }

    // A return stands in texts alone, and would be read again as a line feed.
    void write(const void* data, std::size_t size) override
    {
        bytes += size;
        if (text == nullptr)
            return;
        // By doubling, a large text would take three times its size for a moment.
        if (text->size() > kLargeText && text->size() + size > text->capacity())
            text->reserve(text->size() + Writer(node, nullptr).Run());
        std::string_view rest(static_cast<const char*>(data), size);
        for (std::size_t end = rest.find('\r'); end != std::string_view::npos; end = rest.find('\r'))
        {
            (*text += rest.substr(0, end)) += "&#13;";
            rest.remove_prefix(end + 1);
        }
        *text += rest;
    }

    const pugi::xml_node node;
    std::string* const text;
    std::size_t bytes = 0;
};

// Shows the matches of a query until `visit` returns false.
void ForEach(Tree* tree, const std::string& query, const DocumentNode* context, const Path::Visit& visit)
{
    if (tree != nullptr && (context == nullptr || NodeOf(context)))
        Path::Of(query)->ForEach(*tree, context == nullptr ? tree->document : NodeOf(context), visit);
}
} // namespace

DocumentNode* HandleOf(const Match& match)
{
    if (!match.element)
        return nullptr;
    if (!match.attribute)
        return new DocumentNode(match.element.internal_object());
    const auto address = reinterpret_cast<std::uintptr_t>(match.attribute.internal_object());
    return new DocumentNode(reinterpret_cast<void*>(address | kAttribute));
}

std::vector<DocumentNode*> HandlesOf(const std::vector<Match>& matches)
{
    std::vector<std::unique_ptr<DocumentNode>> owned;
    owned.reserve(matches.size());
    for (const Match& match : matches)
        owned.emplace_back(HandleOf(match));
    std::vector<DocumentNode*> handles(owned.size());
    std::ranges::transform(owned, handles.begin(), [](auto& handle) { return handle.release(); });
    return handles;
}

std::vector<Match> All(Tree* tree, const std::string& query, const DocumentNode* context,
                       const Path::Visit& accept)
{
    std::vector<Match> matches;
    const auto take = [&](const Match& match)
    {
        if (!accept || accept(match))
            matches.push_back(match);
        return true;
    };
    ForEach(tree, query, context, take);
    return matches;
}

Match First(Tree* tree, const std::string& query, const DocumentNode* context, const Path::Visit& accept)
{
    Match first;
    const auto take = [&](const Match& match)
    {
        if (!accept || accept(match))
            first = match;
        return !first.element;
    };
    ForEach(tree, query, context, take);
    return first;
}

void Remove(const std::vector<Match>& matches)
{
    // Backwards, so that a match inside another one goes first.
    for (auto match = matches.rbegin(); match != matches.rend(); ++match)
        if (pugi::xml_node element = match->element; match->attribute)
            element.remove_attribute(match->attribute);
        else
            element.parent().remove_child(element);
}

pugi::xml_node NodeOf(const DocumentNode* handle)
{
    const std::uintptr_t bits = handle == nullptr ? 0 : Bits(*handle);
    return pugi::xml_node((bits & kAttribute) != 0 ? nullptr
                                                   : reinterpret_cast<pugi::xml_node_struct*>(bits));
}

pugi::xml_attribute AttributeOf(const DocumentNode& handle)
{
    if ((Bits(handle) & kAttribute) == 0)
        return {};
    return pugi::xml_attribute(reinterpret_cast<pugi::xml_attribute_struct*>(Bits(handle) & ~kAttribute));
}

pugi::xml_node AppendElement(pugi::xml_node parent, const std::string& name, const std::string& text)
{
    // Only an element that was read, or a copy of one, holds its text itself; else the text is a node more.
    static const struct Pattern : pugi::xml_document
    {
        Pattern()
        {
            Build("<a>b</a>", {}, *this, true);
            document_element().set_name(""); // a copy would have one to give back
        }
    } pattern;
    pugi::xml_node element =
        text.empty() ? parent.append_child() : parent.append_copy(pattern.document_element());
    Require(element.set_name(name.c_str()));
    if (!text.empty())
        Require(element.text().set(text.c_str()));
    return element;
}

void SetAttribute(pugi::xml_node element, const std::string& name, const std::string& value)
{
    pugi::xml_attribute attribute = element.attribute(name.c_str());
    if (!attribute)
        attribute = element.append_attribute(name.c_str());
    Require(*attribute.name() != '\0');
    Require(attribute.set_value(value.c_str()));
}

pugi::xml_node PlaceOfUnlinked(pugi::xml_node node)
{
    const pugi::xml_node last = node.root().last_child();
    return last.type() == pugi::node_element && !IsElement(last)
               ? last
               : Require(node.root().append_child(pugi::node_element));
}

bool Contains(pugi::xml_node outer, pugi::xml_node node)
{
    while (node && node != outer)
        node = node.parent();
    return !node.empty();
}

std::string& Print(pugi::xml_node node, std::string& text)
{
    Writer(node, &text).Run();
    return text;
}

} // namespace analytics::xml
