#pragma once

#include <Shapes.h>

#include <algorithm>
#include <string>

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
    static void Copy(const Line& from, Line& to) { std::copy(std::begin(from), std::end(from), to); }

    bool m_calibrated = false;
    int m_physicalHeight = 175;
    std::string m_physicalHeightUnit = "cm";
    Line m_objects[3];
    Line m_fov[2];
};

} // namespace profile_conversion::sceneanalyzer
