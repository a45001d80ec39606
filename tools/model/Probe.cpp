#include "Probe.h"

#include "Text.h"

#include <sstream>
#include <stdexcept>

namespace model
{
namespace
{

// A list like "rois" gets a "roi" with these.
constexpr char kVertices[] =
    "<vertices><vertex><x>10</x><y>20</y></vertex>"
    "<vertex><x>30</x><y>20</y></vertex><vertex><x>30</x><y>40</y></vertex></vertices>";

void Parse(pugi::xml_document& document, const std::string& text)
{
    if (!document.load_string(text.c_str()))
        throw std::runtime_error("A converter has written no document: '" + text + "'");
}

std::string Text(const pugi::xml_document& document)
{
    std::ostringstream text;
    document.save(text, "", pugi::format_raw);
    return text.str();
}

void FillLists(pugi::xml_node element, std::set<std::string>& lists)
{
    const std::string name = element.name();
    if (IsLeaf(element) && element.text().empty() && name.back() == 's')
    {
        pugi::xml_node item = element.append_child(name.substr(0, name.size() - 1).c_str());
        item.append_child("name").text().set(kZoneName);
        item.append_buffer(kVertices, sizeof kVertices - 1);
        lists.insert(name);
        return;
    }
    for (const pugi::xml_node& child : element.children())
        FillLists(child, lists);
}

class Change
{
  public:
    Change(const Answers& answers, std::string number) : m_answers(answers), m_number(std::move(number)) {}

    // The points stay: a coordinate is never anything but a number.
    void Below(pugi::xml_node element) const
    {
        for (pugi::xml_attribute attribute : element.attributes())
            if (std::string(attribute.name()) != "id")
                attribute.set_value(Instead(attribute.value()));
        if (std::string(element.name()) == "vertices" || m_answers.IsKey(element))
            return;
        if (IsLeaf(element))
            element.text().set(Instead(element.text().get()));
        else
            for (const pugi::xml_node& child : element.children())
                Below(child);
    }

  private:
    const char* Instead(const std::string& value) const
    {
        return IsNumber(value) ? m_number.c_str() : "Other";
    }

    const Answers& m_answers;
    std::string m_number;
};

void AskFor(const Convert& convert, const Answers& answers, long long number, pugi::xml_document& answer)
{
    pugi::xml_document sent;
    sent.reset(answers.usual);
    Change(answers, std::to_string(number)).Below(sent.document_element());
    Parse(answer, convert(Text(sent)));
}

} // namespace

bool Answers::IsKey(const pugi::xml_node& node) const
{
    return std::string(node.name()) == "name" && !lists.contains(node.parent().parent().name());
}

void Ask(const Convert& convert, const std::string& bare, Answers& answers)
{
    pugi::xml_document filled;
    Parse(filled, convert(bare));
    FillLists(filled.document_element(), answers.lists);
    Parse(answers.usual, convert(Text(filled)));
    AskFor(convert, answers, kFar, answers.high);
    AskFor(convert, answers, -kFar, answers.low);
    AskFor(convert, answers, 0, answers.zero);
}

bool IsNumber(const std::string& text) { return client::Integer(text).has_value(); }

bool IsLeaf(const pugi::xml_node& element)
{
    const auto isElement = [](const pugi::xml_node& child) { return child.type() == pugi::node_element; };
    return element.find_child(isElement).empty() || element.first_child().type() == pugi::node_pcdata;
}

} // namespace model
