#pragma once

#include <Shapes.h>
#include <frame/DelayRule.h>
#include <frame/EngineBehaviorConfig.h>

#include <algorithm>
#include <vector>

namespace profile_conversion::frame
{

// A zone in which something that stays is alarmed on.
class StillObjectRule : public DelayRule<3>
{
};

// The model of the behaviors that look for something which came and stays: abandoned objects, stopped
// vehicles.
class StillObjectConfig : public EngineBehaviorConfig<StillObjectRule>
{
  public:
    // Sizes drawn as lines; the setters copy both points.
    const Line& MinSizeFilter() const { return m_minSizeFilter; }
    void MinSizeFilter(const Line& line) { std::copy(std::begin(line), std::end(line), m_minSizeFilter); }
    const Line& MaxSizeFilter() const { return m_maxSizeFilter; }
    void MaxSizeFilter(const Line& line) { std::copy(std::begin(line), std::end(line), m_maxSizeFilter); }

    // In the order of their numbers, empty ones included.
    std::vector<Polygon> ExcludeZones() const { return m_excludeZones; }
    void ExcludeZones(const std::vector<Polygon>& zones) { m_excludeZones = zones; }
    void AddExcludeZone(const Polygon& zone) { m_excludeZones.push_back(zone); }

  private:
    Line m_minSizeFilter;
    Line m_maxSizeFilter;
    std::vector<Polygon> m_excludeZones;
};

} // namespace profile_conversion::frame
