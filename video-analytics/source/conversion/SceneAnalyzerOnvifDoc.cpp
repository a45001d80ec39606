#include <SceneAnalyzerConverter.h>

#include "frame/Field.h"
#include "frame/Nodes.h"

#include <analytics/PluginManager.h>

namespace profile_conversion::sceneanalyzer
{
using namespace frame;

namespace
{

constexpr Field<Config> kEngineNumbers[] = {
    {"SceneType", &Config::SceneType, &Config::SceneType},
    {"Background", &Config::Background, &Config::Background},
    {"Tuning", &Config::Tuning, &Config::Tuning},
    {"Sensitivity", &Config::Sensitivity, &Config::Sensitivity},
};

template <class Model>
struct Shape
{
    const char* type;
    LineField<Model> line;
};
constexpr Shape<Calibration> kCalibrationShapes[] = {
    {"Rectangle", {"ObjectAtNearLeft", &Calibration::ObjectAtNearLeft, &Calibration::ObjectAtNearLeft}},
    {"Rectangle", {"ObjectAtNearRight", &Calibration::ObjectAtNearRight, &Calibration::ObjectAtNearRight}},
    {"Rectangle", {"ObjectAtDistance", &Calibration::ObjectAtDistance, &Calibration::ObjectAtDistance}},
    {"Line", {"NearWidth", &Calibration::NearWidth, &Calibration::NearWidth}},
    {"Line", {"FarWidth", &Calibration::FarWidth, &Calibration::FarWidth}},
};
constexpr Shape<Config> kSizeShapes[] = {
    {"Rectangle", {"MinSize", &Config::MinObjectSize, &Config::MinObjectSize}},
    {"Rectangle", {"MaxSize", &Config::MaxObjectSize, &Config::MaxObjectSize}},
};

std::string PointsOf(const std::string& type, const std::string& name)
{
    return Named(Step(type), name) + "/" + Step("Point");
}

// The value of a SimpleItem.
std::string Value(const std::string& name) { return Named(Step("SimpleItem"), name) + "/@Value"; }

// Null below null.
NodePointer Select(ProfileDoc* doc, const std::string& query, DocumentNode* parent)
{
    return NodePointer(parent == nullptr ? nullptr : doc->SelectNode(query, parent));
}

template <class Text>
void SetItem(ProfileDoc* doc, const char* name, const Text& value, DocumentNode* parent)
{
    if (const NodePointer item = Select(doc, Named(Step("SimpleItem"), name), parent))
        item->SetProperty("Value", value);
}

void SetPoint(DocumentNode* node, const Point& point)
{
    node->SetProperty("x", point.X());
    node->SetProperty("y", point.Y());
}

Point PointOf(DocumentNode& node)
{
    Point point;
    point.Set(node.GetProperty("x", 0), node.GetProperty("y", 0));
    return point;
}

template <class Model, std::size_t N>
void WriteShapes(OnvifDoc& writer, const Model& model, const Shape<Model> (&shapes)[N], DocumentNode* parent,
                 ProfileDoc* doc)
{
    for (const Shape<Model>& shape : shapes)
        writer.LineToNode((model.*shape.line.get)(), shape.type, shape.line.name, parent, doc);
}

// What becomes of a shape that the document lacks.
enum class Missing
{
    KeepsModel,  // its line stays as the model has it
    TakesBefore, // its line becomes that of the shape before it, the first one's (0, 0)
};

template <class Model, std::size_t N>
void ReadShapes(Model& model, const Shape<Model> (&shapes)[N], Missing missing, DocumentNode* parent,
                ProfileDoc* doc)
{
    Line line;
    for (const Shape<Model>& shape : shapes)
    {
        const bool found =
            parent != nullptr && doc->GetLine(line, PointsOf(shape.type, shape.line.name), parent);
        if (found || missing == Missing::TakesBefore)
            (model.*shape.line.set)(line);
    }
}

void ReadPhysicalHeight(Calibration& calibration, DocumentNode* node, ProfileDoc* doc)
{
    const NodePointer height = Select(doc, Named(Step("ElementItem"), "PhysicalHeight"), node);
    if (height != nullptr)
        calibration.PhysicalHeight(
            doc->GetSingleValue(Value("Value"), calibration.PhysicalHeight(), height.get()));
    // Unlike the number, the text has no default: where the document has no unit, it becomes empty.
    calibration.PhysicalHeightUnit(height == nullptr ? std::string()
                                                     : doc->GetSingleValue(Value("Unit"), height.get()));
}

void ReadExcludeZones(OnvifDoc& reader, Config& config, DocumentNode* engine, ProfileDoc* doc)
{
    const std::string query = ElementItem(*doc, "ExcludeZones") + "/" + Step("Polygon");
    for (const NodePointer& node : SelectNodes(*doc, query, engine))
    {
        Polygon zone;
        reader.NodeToPolygon(zone, node.get(), doc);
        if (!zone.empty())
            config.AddExcludeZone(zone);
    }
}

} // namespace

bool OnvifDoc::ConfigToDoc(const Config& config, std::string& xml)
{
    ProfileDoc doc;
    if (!doc.ParseString(analytics::PluginManager().GetDefaultConfiguration(Config::Id())))
        return false;
    const NodePointer engine(doc.SelectEngine(Config::Id()));
    if (engine == nullptr)
        return false;
    for (const Field<Config>& number : kEngineNumbers)
        doc.SetSimpleItemValue(number.Name(), number.Get(config), engine.get());
    const NodePointer calibration(SelectCalibrationNode(engine.get(), &doc));
    CalibrationToNode(config.GetCalibration(), calibration.get(), &doc);
    const NodePointer sizes = Select(&doc, ElementItem(doc, "ObjectSizeFilters"), engine.get());
    WriteShapes(*this, config, kSizeShapes, sizes.get(), &doc);
    // Nothing is cleared: zones that the plug-in's default configuration holds stay in front.
    const NodePointer zones = Select(&doc, ElementItem(doc, "ExcludeZones"), engine.get());
    for (const Polygon& zone : config.ExcludeZones())
        PolygonToNode(zone, zones.get(), &doc);
    xml = doc.DumpToString();
    return true;
}

DocumentNode* OnvifDoc::SelectCalibrationNode(DocumentNode* parent, ProfileDoc* doc)
{
    return doc == nullptr ? nullptr : Select(doc, ElementItem(*doc, "Calibration"), parent).release();
}

void OnvifDoc::CalibrationToNode(const Calibration& calibration, DocumentNode* node, ProfileDoc* doc)
{
    if (node == nullptr || doc == nullptr)
        return;
    WriteShapes(*this, calibration, kCalibrationShapes, node, doc);
    SetItem(doc, "Calibrated", calibration.Calibrated() ? 1 : 0, node);
    const NodePointer height = Select(doc, Named(Step("ElementItem"), "PhysicalHeight"), node);
    SetItem(doc, "Value", calibration.PhysicalHeight(), height.get());
    SetItem(doc, "Unit", calibration.PhysicalHeightUnit(), height.get());
}

void OnvifDoc::LineToNode(const Line& points, const std::string& type, const std::string& propName,
                          DocumentNode* parent, ProfileDoc* doc)
{
    if (parent == nullptr || doc == nullptr)
        return;
    const std::vector<NodePointer> nodes = SelectNodes(*doc, PointsOf(type, propName), parent);
    if (nodes.size() != std::size(points))
        return;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        SetPoint(nodes[i].get(), points[i]);
}

void OnvifDoc::PolygonToNode(const Polygon& poly, DocumentNode* parent, ProfileDoc* doc)
{
    if (doc == nullptr)
        return;
    const NodePointer polygon = AddChild(parent, "Polygon");
    for (const Point& point : poly)
        if (const NodePointer node = AddChild(polygon.get(), "Point"))
            SetPoint(node.get(), point);
}

bool OnvifDoc::DocToConfig(const std::string& xml, Config& config)
{
    ProfileDoc doc;
    if (!doc.ParseString(xml))
        return false;
    const NodePointer engine(doc.SelectEngine(Config::Id()));
    if (engine == nullptr)
        return false;
    for (const Field<Config>& number : kEngineNumbers)
        number.Set(config, doc.GetSimpleItemValue(number.Name(), number.Get(config), engine.get(), true));
    const NodePointer calibration(SelectCalibrationNode(engine.get(), &doc));
    NodeToCalibration(config.GetCalibration(), calibration.get(), &doc);
    // A maximum that is missing becomes equal to the minimum, as in the clients' document.
    const NodePointer sizes = Select(&doc, ElementItem(doc, "ObjectSizeFilters"), engine.get());
    ReadShapes(config, kSizeShapes, Missing::TakesBefore, sizes.get(), &doc);
    ReadExcludeZones(*this, config, engine.get(), &doc);
    return true;
}

void OnvifDoc::NodeToCalibration(Calibration& calibration, DocumentNode* node, ProfileDoc* doc)
{
    if (node == nullptr || doc == nullptr)
        return;
    // Other than the object sizes, and other than in the clients' document, a missing line takes nothing
    // from the one before it.
    ReadShapes(calibration, kCalibrationShapes, Missing::KeepsModel, node, doc);
    calibration.Calibrated(doc->GetSingleValue(Value("Calibrated"), 0, node) != 0);
    ReadPhysicalHeight(calibration, node, doc);
}

void OnvifDoc::NodeToPolygon(Polygon& polygon, DocumentNode* node, ProfileDoc* doc)
{
    if (node == nullptr || doc == nullptr)
        return;
    for (const NodePointer& point : SelectNodes(*doc, Step("Point"), node))
        polygon.push_back(PointOf(*point));
}

} // namespace profile_conversion::sceneanalyzer
