#pragma once

#include <frame/ZoneRule.h>

namespace profile_conversion::frame
{

// A rule that alarms on one direction of movement, or on all of them.
class AnyDirectionRule : public ZoneRule
{
  public:
    int Direction() const { return m_direction; } // 0 to 7 or 8 for all, which nothing enforces
    void Direction(int direction) { m_direction = direction; }

  protected:
    ~AnyDirectionRule() = default;

  private:
    int m_direction = 8;
};

} // namespace profile_conversion::frame
