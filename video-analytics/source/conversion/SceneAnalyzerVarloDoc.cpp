#include <SceneAnalyzerConverter.h>

#include "frame/Field.h"
#include "frame/Nodes.h"

namespace profile_conversion::sceneanalyzer
{
using namespace frame;

namespace
{

constexpr char kVarloDocTemplate[] =
    R"(<?xml version="1.0" encoding="utf-8"?><analyticProfile version="2.0" name=""/>)";

constexpr Field<Config> kNumbers[] = {
    {"sceneType", &Config::SceneType, &Config::SceneType},
    {"background", &Config::Background, &Config::Background},
    {"tuning", &Config::Tuning, &Config::Tuning},
    {"sensitivity", &Config::Sensitivity, &Config::Sensitivity},
};

// A container of lines, the element of each, and the bounds that an editor may offer. The bounds are
// never read back.
struct LineGroup
{
    const char* container;
    const char* type;
    int minValue;
    int maxValue;
};
constexpr LineGroup kObjectSizes = {"objectsizes", "objectsize", 3, 100};
constexpr LineGroup kFovs = {"fovs", "fov", 1, 100};

// The numbers are not in the order of the model: clients know the object at distance as the second one
// and that at near right as the third. In the engine's document the objects have names of their own.
constexpr LineField<Calibration> kObjects[] = {
    {"object1", &Calibration::ObjectAtNearLeft, &Calibration::ObjectAtNearLeft},
    {"object2", &Calibration::ObjectAtDistance, &Calibration::ObjectAtDistance},
    {"object3", &Calibration::ObjectAtNearRight, &Calibration::ObjectAtNearRight},
};
constexpr LineField<Calibration> kWidths[] = {
    {"nearWidth", &Calibration::NearWidth, &Calibration::NearWidth},
    {"farWidth", &Calibration::FarWidth, &Calibration::FarWidth},
};
constexpr LineField<Config> kSizeFilters[] = {
    {"minObj", &Config::MinObjectSize, &Config::MinObjectSize},
    {"maxObj", &Config::MaxObjectSize, &Config::MaxObjectSize},
};

// `line` comes from the caller and is not cleared between the steps: a line that is missing, or has not
// two vertices, takes the points of the line read before it. That is wanted: a client may leave out a
// line that repeats the one before.
template <class Model, std::size_t N>
void ReadLines(VarloDoc& reader, Model& model, const LineField<Model> (&fields)[N], const LineGroup& group,
               Line& line, DocumentNode* parent, Document* doc)
{
    for (const LineField<Model>& field : fields)
    {
        std::string expr = "./";
        expr.append(group.type).append("[name='").append(field.name).append("']/vertices/vertex");
        reader.NodeToLine(line, expr, parent, doc);
        (model.*field.set)(line);
    }
}

void AddLine(VarloDoc& writer, const Line& line, const char* name, const LineGroup& group,
             DocumentNode* parent)
{
    writer.AddNodeFromLine(line, group.type, name, group.minValue, group.maxValue, parent);
}

template <std::size_t N>
NodePointer AddLines(VarloDoc& writer, const Calibration& calibration,
                     const LineField<Calibration> (&fields)[N], const LineGroup& group, DocumentNode* parent)
{
    NodePointer container = AddChild(parent, group.container);
    for (const LineField<Calibration>& field : fields)
        AddLine(writer, (calibration.*field.get)(), field.name, group, container.get());
    return container;
}

void ReadPhysicalHeight(Calibration& calibration, DocumentNode* objectSizes, Document* doc)
{
    const NodePointer height(objectSizes == nullptr ? nullptr
                                                    : doc->SelectNode("./physicalHeight", objectSizes));
    if (height == nullptr)
        return;
    calibration.PhysicalHeight(height->GetValue(calibration.PhysicalHeight()));
    // Whatever it holds: a height without a unit empties the unit, it does not keep the default.
    calibration.PhysicalHeightUnit(height->GetProperty("unit"));
}

void ReadExcludeZones(VarloDoc& reader, Config& config, DocumentNode* root, Document* doc)
{
    // The names are not read: zones are numbered anew whenever they are written.
    for (const NodePointer& node : SelectNodes(*doc, "./excludeZones/excludeZone", root))
    {
        Polygon zone;
        reader.NodeToPolygon(zone, node.get(), doc);
        if (!zone.empty())
            config.AddExcludeZone(zone);
    }
}

} // namespace

std::string VarloDoc::BehaviorNodeQry() { return "//analyticProfile"; }

bool VarloDoc::DocToConfig(const std::string& xml, Config& config)
{
    Document doc;
    const NodePointer root = ParseAndSelect(doc, xml, BehaviorNodeQry());
    if (root == nullptr)
        return false;
    // `cameraPreset` is left alone: the preset goes out to clients and never comes in from them.
    config.ProfileName(root->GetProperty("name"));
    for (const Field<Config>& number : kNumbers)
        number.Set(config,
                   doc.GetSingleValue(std::string("./") + number.Name(), number.Get(config), root.get()));
    const NodePointer calibration(SelectCalibrationNode(root.get(), &doc));
    NodeToCalibration(config.GetCalibration(), calibration.get(), &doc);
    const NodePointer filters(doc.SelectNode("./filters/objectsizes", root.get()));
    Line line; // one for both sizes: see ReadLines
    ReadLines(*this, config, kSizeFilters, kObjectSizes, line, filters.get(), &doc);
    ReadExcludeZones(*this, config, root.get(), &doc);
    return true;
}

DocumentNode* VarloDoc::SelectCalibrationNode(DocumentNode* parent, Document* doc)
{
    return parent == nullptr || doc == nullptr ? nullptr : doc->SelectNode("./calibration", parent);
}

void VarloDoc::NodeToCalibration(Calibration& calibration, DocumentNode* node, Document* doc)
{
    if (node == nullptr || doc == nullptr)
        return;
    calibration.Calibrated(node->GetProperty("calibrated", 0) != 0);
    Line line; // one for the objects and the widths: a first width that is missing takes the last object
    const NodePointer objectSizes(doc->SelectNode("./objectsizes", node));
    ReadLines(*this, calibration, kObjects, kObjectSizes, line, objectSizes.get(), doc);
    ReadPhysicalHeight(calibration, objectSizes.get(), doc);
    const NodePointer fovs(doc->SelectNode("./fovs", node));
    ReadLines(*this, calibration, kWidths, kFovs, line, fovs.get(), doc);
}

void VarloDoc::NodeToLine(Line& line, const std::string& expr, DocumentNode* parent, Document* doc)
{
    if (parent == nullptr || doc == nullptr)
        return;
    const std::vector<NodePointer> vertices = SelectNodes(*doc, expr, parent);
    if (vertices.size() != std::size(line))
        return;
    for (std::size_t i = 0; i < vertices.size(); ++i)
        NodeToPoint(line[i], vertices[i].get(), doc);
}

void VarloDoc::NodeToPolygon(Polygon& polygon, DocumentNode* node, Document* doc)
{
    if (node == nullptr || doc == nullptr)
        return;
    const Points points = ReadPoints(".//vertices/vertex", node, *doc);
    polygon.insert(polygon.end(), points.begin(), points.end());
}

bool VarloDoc::ConfigToDoc(const Config& config, std::string& xml)
{
    Document doc;
    const NodePointer root = ParseAndSelect(doc, kVarloDocTemplate, BehaviorNodeQry());
    if (root == nullptr)
        return false;
    root->SetProperty("name", config.ProfileName());
    AddChild(root.get(), "cameraPreset", config.CameraPreset());
    for (const Field<Config>& number : kNumbers)
        AddChild(root.get(), number.Name(), number.Get(config));
    AddCalibrationNodes(config.GetCalibration(), root.get());
    AddObjectSizeFilterNodes(config.MinObjectSize(), config.MaxObjectSize(), root.get());
    AddExcludeZonesNodes(config.ExcludeZones(), root.get());
    xml = doc.DumpToString();
    return true;
}

void VarloDoc::AddCalibrationNodes(const Calibration& calibration, DocumentNode* parent)
{
    const NodePointer node = AddChild(parent, "calibration");
    if (node == nullptr)
        return;
    node->SetProperty("calibrated", calibration.Calibrated() ? 1 : 0);
    const NodePointer objectSizes = AddLines(*this, calibration, kObjects, kObjectSizes, node.get());
    if (const NodePointer height =
            AddChild(objectSizes.get(), "physicalHeight", calibration.PhysicalHeight()))
        height->SetProperty("unit", calibration.PhysicalHeightUnit());
    AddLines(*this, calibration, kWidths, kFovs, node.get());
}

void VarloDoc::AddObjectSizeFilterNodes(const Line& minObjSize, const Line& maxObjSize, DocumentNode* parent)
{
    const NodePointer filters = AddChild(parent, "filters");
    const NodePointer objectSizes = AddChild(filters.get(), kObjectSizes.container);
    AddLine(*this, minObjSize, kSizeFilters[0].name, kObjectSizes, objectSizes.get());
    AddLine(*this, maxObjSize, kSizeFilters[1].name, kObjectSizes, objectSizes.get());
}

void VarloDoc::AddExcludeZonesNodes(const std::vector<Polygon>& zones, DocumentNode* parent)
{
    const NodePointer node = AddChild(parent, "excludeZones");
    int number = 0; // counts every zone, also one that is not written
    for (const Polygon& zone : zones)
        AddNodeFromZone(zone, "Exclude " + std::to_string(++number), node.get());
}

void VarloDoc::AddNodeFromLine(const Line& line, const std::string& type, const std::string& name,
                               int minValue, int maxValue, DocumentNode* node)
{
    const NodePointer block = AddChild(node, type);
    AddChild(block.get(), "name", name);
    AddChild(block.get(), "minValue", minValue);
    AddChild(block.get(), "maxValue", maxValue);
    const NodePointer vertices = AddChild(block.get(), "vertices");
    for (const Point& point : line)
        AddPointNode(point, vertices.get());
}

void VarloDoc::AddNodeFromZone(const Polygon& zone, const std::string& name, DocumentNode* parent)
{
    if (zone.empty())
        return;
    const NodePointer node = AddChild(parent, "excludeZone");
    AddChild(node.get(), "name", name);
    const NodePointer vertices = AddChild(node.get(), "vertices");
    AddPointsNodes(zone, vertices.get());
}

void VarloDoc::AddPointNode(const Point& point, DocumentNode* parent) { AddPointNodes(point, parent); }

} // namespace profile_conversion::sceneanalyzer
