#include "documents/Fields.h"
#include "documents/Schemas.h"

namespace client
{
namespace
{

// A dash is a minus only behind a backslash, and no line of text begins with a point or a quote.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text)
        escaped += c == '-' ? "\\-" : c == '\\' ? "\\e" : std::string(1, c);
    return escaped;
}

std::string Choices(const DocumentField& field)
{
    std::string text;
    for (std::size_t i = 0; i < field.choices.size(); ++i)
        text += (i == 0 ? ": " : ", ") + std::to_string(i) + " " + field.choices[i];
    return text;
}

} // namespace

std::string ManPageTable(const DocumentModel& model)
{
    std::string page = ".SS " + Escaped(model.title) + "\n";
    if (const std::optional<Bounds> points = model.ZonePoints(); points && model.HasZones())
        page += "Zones of " + BoundsText(*points) + " points.\n";
    for (const DocumentField& field : FieldsOf(model))
    {
        page += ".TP\n.B " + Escaped(field.path) + "\n" +
                Escaped(field.meaning->label + ": " + field.meaning->text + Choices(field));
        if (!field.meaning->unit.empty())
            page += ", in " + Escaped(field.meaning->unit);
        if (field.bounds && field.type == "integer")
            page += "; advised: " + Escaped(BoundsText(*field.bounds));
        if (!field.value.empty() && field.type != "points" && field.type != "box")
            page += "; if missing: " + Escaped(field.value);
        page += ".\n";
    }
    return page;
}

} // namespace client
