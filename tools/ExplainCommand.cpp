#include "ExplainCommand.h"

#include "Failure.h"
#include "Session.h"
#include "documents/Fields.h"
#include "documents/Suggestion.h"

namespace client
{
namespace
{

std::string ChoicesOf(const DocumentField& field)
{
    std::string text;
    for (std::size_t i = 0; i < field.choices.size(); ++i)
        text += (text.empty() ? "" : ", ") + std::to_string(i) + " " + field.choices[i];
    return text;
}

std::string MeaningText(const DocumentField& field)
{
    const std::string choices = ChoicesOf(field);
    return field.meaning->text + (choices.empty() ? "" : ": " + choices);
}

std::vector<DocumentField> Wanted(const DocumentModel& model, const std::string& name)
{
    std::vector<DocumentField> fields = FieldsOf(model);
    std::vector<std::string> names;
    for (const DocumentField& field : fields)
        names.push_back(field.name);
    if (name.empty())
        return fields;
    // A field, or all of a group as in "rois".
    std::erase_if(fields,
                  [&name](const DocumentField& field) {
                      return field.name != name && field.path != name && !field.path.starts_with(name + "/");
                  });
    if (!fields.empty())
        return fields;
    const std::string near = Nearest(name, names);
    throw Failure(Exit::Usage, "There is no field '" + name + "' in " + model.name +
                                   (near.empty() ? ". The same command without it shows all"
                                                 : ". Did you mean " + near + "?"));
}

Json ChoicesJson(const DocumentField& field)
{
    Json choices = Json::object();
    for (std::size_t i = 0; i < field.choices.size(); ++i)
        choices[std::to_string(i)] = field.choices[i];
    return choices;
}

Value Number(const std::optional<Bounds>& bounds, long long Bounds::*side)
{
    if (!bounds || (*bounds).*side == INT_MAX || (*bounds).*side == INT_MIN)
        return {};
    return (*bounds).*side;
}

// For programs; people get fewer columns.
List Table(const std::vector<DocumentField>& fields, bool json)
{
    List list{{{"field", "FIELD"},
               {"unit", "UNIT"},
               {"values", "ADVISED"},
               {"default", "IF MISSING"},
               {"meaning", "MEANING"}},
              {}};
    if (json)
        list.columns.insert(
            list.columns.end(),
            {{"label", ""}, {"type", ""}, {"min", ""}, {"max", ""}, {"choices", ""}, {"readOnly", ""}});
    for (const DocumentField& field : fields)
    {
        std::string values = field.bounds ? BoundsText(*field.bounds) : "";
        if (field.bounds && (field.type == "points" || field.type == "box"))
            values += " points";
        Row row = {field.path, field.meaning->unit, values, field.value,
                   json ? field.meaning->text : MeaningText(field)};
        if (json)
            row.insert(row.end(),
                       {field.meaning->label, field.type, Number(field.bounds, &Bounds::min),
                        Number(field.bounds, &Bounds::max), Raw{ChoicesJson(field)}, field.readOnly});
        list.rows.push_back(std::move(row));
    }
    return list;
}

} // namespace

void Explain(Session& session, const DocumentModel& model, const std::string& field)
{
    const std::vector<DocumentField> fields = Wanted(model, field);
    std::string sentence = model.title + " (" + model.name + "). Points are counted in a frame of " +
                           session.Frame().Text() +
                           ", from the top left, x to the right, y down; --frame names another.";
    Record record = {{"name", model.name}, {"title", model.title}, {"frame", session.Frame().Text()}};
    if (!model.IsScene())
    {
        record.emplace_back("id", model.alias);
        record.emplace_back("stillCamera", model.fixedCamera);
        sentence += model.fixedCamera ? " It needs a camera that stands still." : " The camera may move.";
    }
    if (const std::optional<Bounds> points = model.ZonePoints(); points && model.HasZones())
        sentence += " A zone has " + BoundsText(*points) + " points.";
    session.Out().Report(record, sentence, "fields", Table(fields, session.json));
}

} // namespace client
