#include "ModelText.h"

#include <iomanip>
#include <sstream>

namespace model
{
namespace
{

using client::Bounds;
using client::DocumentModel;
using client::Element;
using client::Field;

template <class Thing>
void Write(std::ostream& out, const std::vector<Thing>& things, void (*write)(std::ostream&, const Thing&))
{
    out << '{';
    for (const Thing& thing : things)
    {
        write(out, thing);
        out << ", ";
    }
    out << '}';
}

void WriteBounds(std::ostream& out, const Bounds& bounds)
{
    out << '{' << bounds.min << ", " << bounds.max << '}';
}

void WriteField(std::ostream& out, const Field& field)
{
    constexpr const char* kKinds[] = {"Number", "Flag", "Text", "Constant", "Assigned"};
    out << '{' << std::quoted(field.name) << ", Field::Kind::" << kKinds[static_cast<int>(field.kind)] << ", "
        << std::quoted(field.value) << ", ";
    WriteBounds(out, field.accepted);
    out << ", ";
    if (field.advised)
        WriteBounds(out << "Bounds", *field.advised);
    else
        out << "std::nullopt";
    out << '}';
}

void WriteElement(std::ostream& out, const Element& element)
{
    constexpr const char* kForms[] = {"Leaf", "Group", "List", "Points", "Line"};
    out << "Element{" << std::quoted(element.name) << ", " << std::quoted(element.key)
        << ", Element::Form::" << kForms[static_cast<int>(element.form)] << ", ";
    Write(out, element.attributes, WriteField);
    out << ", ";
    Write(out, element.value, WriteField);
    out << ",\n";
    Write(out, element.children, WriteElement);
    out << '}';
}

void WriteModel(std::ostream& out, const DocumentModel& model)
{
    out << "DocumentModel{" << std::quoted(model.name) << ", " << std::quoted(model.id) << ", "
        << std::quoted(model.alias) << ", " << std::quoted(model.title) << ", "
        << (model.fixedCamera ? "true" : "false") << ",\n";
    WriteElement(out, model.root);
    out << '}';
}

} // namespace

std::string AsSource(const std::vector<DocumentModel>& behaviors, const DocumentModel& scene)
{
    std::ostringstream out;
    out << "#include \"documents/Models.h\"\n\nnamespace client\n{\n"
           "const std::vector<DocumentModel>& BehaviorModels()\n{\nstatic const std::vector<DocumentModel> "
           "models = ";
    Write(out, behaviors, WriteModel);
    out << ";\nreturn models;\n}\n\nconst DocumentModel& SceneModel()\n{\nstatic const DocumentModel model "
           "= ";
    WriteModel(out, scene);
    out << ";\nreturn model;\n}\n} // namespace client\n";
    return out.str();
}

} // namespace model
