#pragma once

#include <SceneAnalyzerConfig.h>

#include <string>

namespace analytics
{
class DocumentNode;
class ProfileDoc;
} // namespace analytics

namespace profile_conversion::sceneanalyzer
{

using analytics::DocumentNode;
using analytics::ProfileDoc;

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

} // namespace profile_conversion::sceneanalyzer
