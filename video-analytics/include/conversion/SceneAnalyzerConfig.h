#pragma once

#include <Shapes.h>

#include <string>
#include <vector>

namespace profile_conversion::sceneanalyzer
{

// How the picture relates to real sizes: an object of known height, drawn as a line from one of its ends
// to the other at three places, and the width of the field of view near the camera and far from it.
class Calibration
{
  public:
    bool Calibrated() const { return m_calibrated; }
    void Calibrated(bool calibrated) { m_calibrated = calibrated; }

    // In PhysicalHeightUnit(), a free text.
    int PhysicalHeight() const { return m_physicalHeight; }
    void PhysicalHeight(int height) { m_physicalHeight = height; }
    const std::string& PhysicalHeightUnit() const { return m_physicalHeightUnit; }
    void PhysicalHeightUnit(const std::string& unit) { m_physicalHeightUnit = unit; }

    // Setters copy both points.
    const Line& ObjectAtNearLeft() const { return m_objects[0]; }
    void ObjectAtNearLeft(const Line& line) { Copy(line, m_objects[0]); }
    const Line& ObjectAtNearRight() const { return m_objects[1]; }
    void ObjectAtNearRight(const Line& line) { Copy(line, m_objects[1]); }
    const Line& ObjectAtDistance() const { return m_objects[2]; }
    void ObjectAtDistance(const Line& line) { Copy(line, m_objects[2]); }

    const Line& NearWidth() const { return m_fov[0]; }
    void NearWidth(const Line& line) { Copy(line, m_fov[0]); }
    const Line& FarWidth() const { return m_fov[1]; }
    void FarWidth(const Line& line) { Copy(line, m_fov[1]); }

  private:
    bool m_calibrated = false;
    int m_physicalHeight = 175;
    std::string m_physicalHeightUnit = "cm";
    Line m_objects[3];
    Line m_fov[2];
};

// The scene of a profile: what the analytics must know of the camera's view. No number is tested
// against a range; each travels as it came.
class Config
{
  public:
    // The engine that a scene configures. A scene has no alias.
    static std::string Id() { return "com.varlo.engine.sceneanalyzer"; }

    const std::string& ProfileName() const { return m_profileName; }
    void ProfileName(const std::string& name) { m_profileName = name; }
    const std::string& CameraPreset() const { return m_cameraPreset; }
    void CameraPreset(const std::string& preset) { m_cameraPreset = preset; }

    int SceneType() const { return m_sceneType; }
    void SceneType(int type) { m_sceneType = type; }
    int Background() const { return m_background; }
    void Background(int background) { m_background = background; }
    int Tuning() const { return m_tuning; }
    void Tuning(int tuning) { m_tuning = tuning; }
    int Sensitivity() const { return m_sensitivity; }
    void Sensitivity(int sensitivity) { m_sensitivity = sensitivity; }

    const Calibration& GetCalibration() const { return m_calibration; }
    Calibration& GetCalibration() { return m_calibration; }

    // Sizes drawn as lines; setters copy both points.
    const Line& MinObjectSize() const { return m_objectSizeFilters[0]; }
    void MinObjectSize(const Line& line) { Copy(line, m_objectSizeFilters[0]); }
    const Line& MaxObjectSize() const { return m_objectSizeFilters[1]; }
    void MaxObjectSize(const Line& line) { Copy(line, m_objectSizeFilters[1]); }

    const std::vector<Polygon>& ExcludeZones() const { return m_excludeZones; }
    void AddExcludeZone(const Polygon& zone) { m_excludeZones.push_back(zone); }

  private:
    std::string m_profileName;
    std::string m_cameraPreset;
    int m_sceneType = 0;
    int m_background = 0;
    int m_tuning = 0;
    int m_sensitivity = 5;
    Calibration m_calibration;
    Line m_objectSizeFilters[2];
    std::vector<Polygon> m_excludeZones;
};

} // namespace profile_conversion::sceneanalyzer
