#pragma once

#include <ProfileDocConverter.h>
#include <SceneAnalyzerConfig.h>
#include <frame/BehaviorDoc.h>

#include <string>
#include <vector>

namespace analytics
{
class DocumentNode;
class ProfileDoc;
} // namespace analytics

namespace profile_conversion
{
namespace sceneanalyzer
{

using analytics::Document;
using analytics::DocumentNode;
using analytics::ProfileDoc;

// Reader and writer of the scene as clients see it, an `analyticProfile` document. All pointers may be
// null, and nothing happens then; none is owned.
class VarloDoc : public frame::BehaviorNodes
{
  public:
    // What the document lacks keeps the value that `config` came with. False, and `config` as it came, if
    // the text is not well-formed or holds no `analyticProfile`.
    bool DocToConfig(const std::string& xml, Config& config);
    // False, and `xml` as it came, if no document can be made.
    bool ConfigToDoc(const Config& config, std::string& xml);

    std::string BehaviorNodeQry();
    // The caller owns the handle.
    DocumentNode* SelectCalibrationNode(DocumentNode* parent, Document* doc);
    void NodeToCalibration(Calibration& calibration, DocumentNode* node, Document* doc);
    // Leaves `line` alone unless `expr` finds exactly two vertices.
    void NodeToLine(Line& line, const std::string& expr, DocumentNode* parent, Document* doc);
    void NodeToPolygon(Polygon& polygon, DocumentNode* node, Document* doc); // appends

    void AddCalibrationNodes(const Calibration& calibration, DocumentNode* parent);
    void AddObjectSizeFilterNodes(const Line& minObjSize, const Line& maxObjSize, DocumentNode* parent);
    void AddExcludeZonesNodes(const std::vector<Polygon>& zones, DocumentNode* parent);
    // `minValue` and `maxValue` are bounds that an editor may offer for the line.
    void AddNodeFromLine(const Line& line, const std::string& type, const std::string& name, int minValue,
                         int maxValue, DocumentNode* node);
    void AddNodeFromZone(const Polygon& zone, const std::string& name, DocumentNode* parent);
    void AddPointNode(const Point& point, DocumentNode* parent);
};

// Reader and writer of the scene as the platform stores it: one engine module and no rule. Written is
// into the plug-in's default configuration, whose items are given values and never made. All pointers
// may be null, and nothing happens then; none is owned.
class OnvifDoc
{
  public:
    // What the document lacks keeps the value that `config` came with. False, and `config` as it came, if
    // the text is not well-formed or has no module of the scene analyzer.
    bool DocToConfig(const std::string& xml, Config& config);
    // False, and `xml` as it came, if the plug-in delivers no such default configuration.
    bool ConfigToDoc(const Config& config, std::string& xml);

    // The caller owns the handle.
    DocumentNode* SelectCalibrationNode(DocumentNode* parent, ProfileDoc* doc);
    void NodeToCalibration(Calibration& calibration, DocumentNode* node, ProfileDoc* doc);
    void CalibrationToNode(const Calibration& calibration, DocumentNode* node, ProfileDoc* doc);
    // Moves the two points of the shape `type` named `propName`; one with any other number of points
    // stays as it is.
    void LineToNode(const Line& points, const std::string& type, const std::string& propName,
                    DocumentNode* parent, ProfileDoc* doc);
    void PolygonToNode(const Polygon& poly, DocumentNode* parent, ProfileDoc* doc);
    void NodeToPolygon(Polygon& polygon, DocumentNode* node, ProfileDoc* doc); // appends
};

} // namespace sceneanalyzer

// The scene between its two forms. A scene has no additional component.
class SceneAnalyzerConverter : public ProfileDocConverter
{
  public:
    static bool CanConvert(const std::string& id); // the engine's identifier itself: a scene has no alias

    // Writes the name of the client's document to `params`, and an empty preset; neither when the text
    // can't be read. The active flag plays no part in either direction.
    std::string FromVarloToOnvif(const std::string& varloDoc, ProfileParameters& params) override;
    // The name and the preset come from `params` alone.
    std::string FromOnvifToVarlo(const std::string& onvifDoc, const ProfileParameters& params) override;
};

} // namespace profile_conversion
