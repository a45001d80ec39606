#pragma once

#include <SceneAnalyzerConfig.h>
#include <frame/BehaviorNodes.h>

#include <string>
#include <vector>

namespace profile_conversion::sceneanalyzer
{

using analytics::Document;
using analytics::DocumentNode;

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

} // namespace profile_conversion::sceneanalyzer
