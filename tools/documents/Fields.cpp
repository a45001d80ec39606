#include "documents/Fields.h"

#include "documents/Shape.h"

#include <algorithm>

namespace client
{
namespace
{

class Collector
{
  public:
    explicit Collector(const DocumentModel& model) : m_model(model) {}

    std::vector<DocumentField> fields;

    void Group(const Element& element, const std::string& path)
    {
        for (const Field& field : element.attributes)
            Value(field, path);
        for (const Element& child : element.children)
            if (InJson(child))
                One(child, path);
    }

  private:
    void One(const Element& element, const std::string& path)
    {
        const std::string place = path + JsonName(element);
        if (element.form == Element::Form::Leaf)
        {
            Value(element.value.front(), path);
            for (const Field& field : element.attributes)
                Value(field, path);
        }
        else if (LineOf(element) != nullptr)
            Add(place, element.key, "box", Bounds{2, 2});
        else if (element.form == Element::Form::Points)
            Add(place, element.name, "points", m_model.ZonePoints());
        else if (element.form == Element::Form::List && IsPoints(element.children.front()))
            Add(place, element.name, "points", std::nullopt);
        else
            Group(element.form == Element::Form::List ? element.children.front() : element, place + "/");
    }

    void Add(const std::string& path, const std::string& name, const std::string& type,
             std::optional<Bounds> bounds)
    {
        fields.push_back({path,
                          name,
                          type,
                          &MeaningOf(name),
                          bounds,
                          {},
                          type == "box" ? "0, 0 and 0, 0" : "none",
                          false});
    }

    void Value(const Field& field, const std::string& path)
    {
        if (field.kind == Field::Kind::Constant)
            return;
        const bool number = field.kind == Field::Kind::Number;
        DocumentField one{path + field.name,
                          field.name,
                          number                            ? "integer"
                          : field.kind == Field::Kind::Flag ? "flag"
                                                            : "text",
                          &MeaningOf(field.name),
                          Advised(field),
                          {},
                          field.value,
                          field.kind == Field::Kind::Assigned};
        one.choices = one.meaning->choices;
        if (field.accepted.min > INT_MIN)
            one.bounds = field.accepted;
        if (one.bounds && one.bounds->max + 1 < static_cast<long long>(one.choices.size()))
            one.choices.resize(static_cast<std::size_t>(one.bounds->max + 1));
        fields.push_back(std::move(one));
    }

    const DocumentModel& m_model;
};

} // namespace

std::vector<DocumentField> FieldsOf(const DocumentModel& model)
{
    Collector collector(model);
    collector.Group(model.root, "");
    return std::move(collector.fields);
}

} // namespace client
