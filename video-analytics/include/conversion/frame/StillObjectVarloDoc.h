#pragma once

#include <frame/BehaviorDoc.h>

namespace profile_conversion::frame
{

// The element of an exclude zone, also of an empty one, named by its number. Nothing without a parent.
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
