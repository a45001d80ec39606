#include "documents/Compare.h"

#include "Text.h"
#include "documents/Shape.h"

#include <algorithm>

namespace client
{
namespace
{

bool IsNumber(const Field& field)
{
    return field.kind == Field::Kind::Number || field.kind == Field::Kind::Flag;
}

// As the service reads it: what isn't a number counts as missing, a number out of range as the nearest.
Json Taken(const Field& field, const Json& given)
{
    if (!IsNumber(field))
        return given.is_string() ? Json(Trimmed(given.get<std::string>())) : Json(field.value);
    const bool isInteger =
        given.is_number_integer() && Bounds{INT_MIN, INT_MAX}.Holds(given.get<long long>());
    const long long number = isInteger ? given.get<long long>() : field.Number();
    if (field.kind == Field::Kind::Flag)
        return number == 0 ? 0 : 1;
    return std::clamp(number, field.accepted.min, field.accepted.max);
}

class Normaliser
{
  public:
    Json Group(const Element& element, const Json& given)
    {
        Json object = Json::object();
        for (const Field& field : element.attributes)
            if (field.kind != Field::Kind::Constant)
                object[field.name] = Taken(field, given.value(field.name, Json()));
        for (const Element& child : element.children)
            if (InJson(child))
                Child(object, child, given);
        return object;
    }

  private:
    void Child(Json& object, const Element& element, const Json& given)
    {
        const Json value = given.is_object() ? given.value(JsonName(element), Json()) : Json();
        if (LineOf(element) != nullptr)
            object[element.key] = Line(value);
        else if (element.form == Element::Form::Leaf)
            Leaf(object, element, given, value);
        else if (element.form == Element::Form::List)
            object[element.name] = List(element, value);
        else if (element.form == Element::Form::Group)
        {
            if (m_depth++ == 0)
                m_line = kNoLine; // the calibration and the filters each begin anew
            object[element.name] = Group(element, value.is_object() ? value : Json::object());
            --m_depth;
        }
        else
            object[element.name] = value.is_array() ? value : Json::array();
    }

    static void Leaf(Json& object, const Element& element, const Json& given, const Json& value)
    {
        const Field& field = element.value.front();
        if (field.kind != Field::Kind::Constant && field.kind != Field::Kind::Assigned)
            object[element.name] = Taken(field, value);
        for (const Field& attribute : element.attributes)
            if (attribute.kind == Field::Kind::Text)
                // A value that is there without its unit has none.
                object[attribute.name] =
                    value.is_null() ? Json(attribute.value) : given.value(attribute.name, Json(""));
    }

    Json List(const Element& list, const Json& value)
    {
        Json items = Json::array();
        const Element& item = list.children.front();
        for (const Json& one : value.is_array() ? value : Json::array())
            if (!IsPoints(item))
                items.push_back(Group(item, one));
            else if (!one.empty()) // one without points isn't stored
                items.push_back(one);
        return items;
    }

    // One that isn't there has the points of the one before it.
    Json Line(const Json& value)
    {
        if (value.is_array() && value.size() == 2)
            m_line = value;
        return m_line;
    }

    const Json kNoLine = {{0, 0}, {0, 0}};
    Json m_line = kNoLine;
    int m_depth = 0;
};

bool IsIdleForm(const Json& normalised)
{
    return normalised["active"] == 0 && (!normalised.contains("rois") || normalised["rois"].empty());
}

} // namespace

bool IsActive(const DocumentModel& model, const std::string& document)
{
    const Json normalised = Normalised(model, document);
    return normalised.is_object() && normalised.value("active", 0) == 1;
}

Json Normalised(const DocumentModel& model, const std::string& document)
{
    if (Trimmed(document).empty())
        return Json();
    const Json given = ToJson(model, document);
    if (given.is_null())
        return Json();
    Json normalised = Normaliser().Group(model.root, given);
    normalised.erase("id");
    if (model.IsScene())
        normalised.erase("name");
    else if (IsIdleForm(normalised))
        return Json();
    return normalised;
}

} // namespace client
