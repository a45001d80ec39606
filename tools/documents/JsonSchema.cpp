#include "Text.h"
#include "documents/Meanings.h"
#include "documents/Schemas.h"
#include "documents/Shape.h"

namespace client
{
namespace
{

// Any character but those that XML has no room for.
constexpr char kText[] = "^[^\\u0000-\\u0008\\u000b\\u000c\\u000e-\\u001f]*$";

Json Described(Json schema, const std::string& name)
{
    const Meaning& meaning = MeaningOf(name);
    if (!meaning.text.empty())
        schema["description"] = meaning.text + (meaning.unit.empty() ? "" : " (" + meaning.unit + ")");
    return schema;
}

Json Numbers(const Bounds& bounds)
{
    return {{"type", "integer"}, {"minimum", bounds.min}, {"maximum", bounds.max}};
}

class Writer
{
  public:
    explicit Writer(const DocumentModel& model) : m_model(model) {}

    Json Group(const Element& element) const
    {
        Json properties = Json::object();
        Json required = Json::array();
        for (const Field& field : element.attributes)
        {
            properties[field.name] = Value(field);
            if (field.name == "id")
                required.push_back(field.name);
        }
        for (const Element& child : element.children)
            if (InJson(child))
            {
                properties[JsonName(child)] = Described(One(child), JsonName(child));
                for (const Field& field : child.attributes)
                    if (child.form == Element::Form::Leaf && MeansSomething(field))
                        properties[field.name] = Value(field);
                if (child.name == "rois")
                    required.push_back(child.name);
            }
        Json schema = {{"type", "object"}, {"properties", properties}, {"additionalProperties", false}};
        if (!required.empty())
            schema["required"] = required;
        return schema;
    }

  private:
    Json Value(const Field& field) const
    {
        switch (field.kind)
        {
        case Field::Kind::Flag:
            return Described({{"enum", {0, 1, false, true}}}, field.name);
        case Field::Kind::Number:
            return Described(Numbers(field.accepted), field.name);
        case Field::Kind::Constant:
            if (field.name == "id")
                return {{"enum", {m_model.alias, m_model.id}}};
            if (const std::optional<long long> number = Integer(field.value))
                return {{"const", *number}};
            return {{"const", field.value}};
        default:
            return Described({{"type", "string"}, {"pattern", kText}}, field.name);
        }
    }

    static Json Points(int least)
    {
        const Json coordinate = Numbers({INT_MIN, INT_MAX});
        const Json point = {{"type", "array"}, {"items", coordinate}, {"minItems", 2}, {"maxItems", 2}};
        return {{"type", "array"}, {"items", point}, {"minItems", least}};
    }

    static Json Line()
    {
        Json two = Points(2);
        two["maxItems"] = 2;
        return {{"anyOf", {{{"type", "array"}, {"maxItems", 0}}, two}}};
    }

    Json One(const Element& element) const
    {
        if (LineOf(element) != nullptr)
            return Line();
        if (element.form == Element::Form::Leaf)
            return Value(element.value.front());
        if (element.form == Element::Form::Points)
            return Points(0);
        if (element.form == Element::Form::Group)
            return Group(element);
        const Element& item = element.children.front();
        return {{"type", "array"}, {"items", IsPoints(item) ? Points(1) : Group(item)}};
    }

    const DocumentModel& m_model;
};

} // namespace

Json JsonSchema(const DocumentModel& model)
{
    Json schema = {{"$schema", "http://json-schema.org/draft-07/schema#"}, {"title", model.title}};
    schema.update(Writer(model).Group(model.root));
    return schema;
}

} // namespace client
