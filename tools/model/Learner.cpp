#include "Learner.h"

#include "Text.h"

namespace model
{
namespace
{

using client::Bounds;
using client::Element;
using client::Field;

constexpr Bounds kInteger = {INT_MIN, INT_MAX};

// The same place in all answers.
struct Place
{
    pugi::xml_node usual;
    pugi::xml_node high;
    pugi::xml_node low;
    pugi::xml_node zero;
};

struct Values
{
    std::string usual;
    std::string high;
    std::string low;
    std::string zero;
};

Field TextField(const std::string& name, const Values& values)
{
    const bool kept = values.high == "Other";
    const bool constant = values.high == values.usual;
    const bool own = values.usual == kZoneName || values.usual == kProfileName;
    return {name,
            kept       ? Field::Kind::Text
            : constant ? Field::Kind::Constant
                       : Field::Kind::Assigned,
            (constant || kept) && !own ? values.usual : "", kInteger, std::nullopt};
}

Field FieldOf(const std::string& name, const Values& values)
{
    if (!IsNumber(values.usual))
        return TextField(name, values);
    const long long high = client::Integer(values.high).value();
    const long long low = client::Integer(values.low).value();
    const long long zero = client::Integer(values.zero).value();
    Field field{name, Field::Kind::Number, values.usual, kInteger, std::nullopt};
    if (high == low && high == zero)
        field.kind = Field::Kind::Constant;
    else if (high == low)
        field.kind = Field::Kind::Flag;
    field.accepted = {low == -kFar ? INT_MIN : std::min(low, zero), high == kFar ? INT_MAX : high};
    return field;
}

Values AttributesOf(const Place& place, const char* name)
{
    return {place.usual.attribute(name).value(), place.high.attribute(name).value(),
            place.low.attribute(name).value(), place.zero.attribute(name).value()};
}

class Learner
{
  public:
    explicit Learner(const Answers& answers) : m_answers(answers) {}

    Element Learn(const Place& place, bool inList = false) const
    {
        Element element{
            place.usual.name(), place.usual.child("name").text().get(), Element::Form::Leaf, {}, {}, {}};
        if (!m_answers.IsKey(place.usual.child("name")))
            element.key.clear();
        for (const pugi::xml_attribute& attribute : place.usual.attributes())
            element.attributes.push_back(FieldOf(attribute.name(), AttributesOf(place, attribute.name())));
        if (element.name == "vertices")
            element.form = inList ? Element::Form::Points : Element::Form::Line;
        else if (IsLeaf(place.usual) && !m_answers.lists.contains(element.name))
            LearnValue(element, place, inList);
        else
            LearnChildren(element, place, inList);
        return element;
    }

  private:
    static void LearnValue(Element& element, const Place& place, bool inList)
    {
        Field value = FieldOf(element.name, {place.usual.text().get(), place.high.text().get(),
                                             place.low.text().get(), place.zero.text().get()});
        // What a zone is called by where it stands.
        if (inList && value.kind == Field::Kind::Constant && !IsNumber(value.value))
            value.kind = Field::Kind::Assigned;
        if (const Field* const min = element.Attribute("min"), * const max = element.Attribute("max");
            min && max)
            value.advised = Bounds{min->Number(), max->Number()};
        element.value.push_back(value);
    }

    void LearnChildren(Element& element, const Place& place, bool inList) const
    {
        const bool list = m_answers.lists.contains(element.name);
        const bool kept = !place.usual.first_child().empty();
        element.form = list && kept ? Element::Form::List : Element::Form::Group;
        Place child = {place.usual.first_child(), place.high.first_child(), place.low.first_child(),
                       place.zero.first_child()};
        while (!child.usual.empty())
        {
            if (!m_answers.IsKey(child.usual))
                element.children.push_back(Learn(child, inList || list));
            child = {child.usual.next_sibling(), child.high.next_sibling(), child.low.next_sibling(),
                     child.zero.next_sibling()};
        }
    }

    const Answers& m_answers;
};

} // namespace

client::Element Learn(const Answers& answers)
{
    Element root = Learner(answers).Learn({answers.usual.document_element(), answers.high.document_element(),
                                           answers.low.document_element(), answers.zero.document_element()});
    for (Field& attribute : root.attributes)
        if (attribute.kind == Field::Kind::Flag)
            attribute.value = "0"; // one that is missing is never set, and we have sent "active"
    return root;
}

} // namespace model
