#pragma once

#include <Shapes.h>
#include <frame/BehaviorConfig.h>
#include <frame/BehaviorDoc.h>

#include <vector>

// What the behaviors share that look for something which came and stays: abandoned objects, stopped vehicles.
namespace profile_conversion::frame
{

// What such a model has above its rules.
class StillObjectHead
{
  public:
    // Sizes drawn as lines; the setters copy both points.
    const Line& MinSizeFilter() const { return m_minSizeFilter; }
    void MinSizeFilter(const Line& line) { Copy(line, m_minSizeFilter); }
    const Line& MaxSizeFilter() const { return m_maxSizeFilter; }
    void MaxSizeFilter(const Line& line) { Copy(line, m_maxSizeFilter); }

    // In the order of their numbers, empty ones included.
    std::vector<Polygon> ExcludeZones() const { return m_excludeZones; }
    void ExcludeZones(const std::vector<Polygon>& zones) { m_excludeZones = zones; }
    void AddExcludeZone(const Polygon& zone) { m_excludeZones.push_back(zone); }

  protected:
    ~StillObjectHead() = default;

  private:
    Line m_minSizeFilter;
    Line m_maxSizeFilter;
    std::vector<Polygon> m_excludeZones;
};

template <class RuleT>
class StillObjectConfig : public EngineBehaviorConfig<RuleT>, public StillObjectHead
{
};

// The element of an exclude zone, also of an empty one, named by its number.
// Nothing without a parent.
void AddExcludeZoneNode(int number, const Polygon& zone, analytics::DocumentNode* parent);

template <class Config>
class StillObjectVarloDoc : public BehaviorDoc<Config>
{
  public:
    void AddExcludeZone(int idx, const Polygon& zone, analytics::DocumentNode* parent)
    {
        AddExcludeZoneNode(idx, zone, parent);
    }
};

} // namespace profile_conversion::frame
