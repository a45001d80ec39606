#pragma once

#include <frame/BehaviorConfig.h>

namespace profile_conversion::directionalmotion
{

// A zone or, with two points, a line through which nothing may move in one direction.
class Rule : public frame::ZoneRule
{
  public:
    int Direction() const { return m_direction; } // 0 to 7, which nothing enforces
    void Direction(int direction) { m_direction = direction; }
    int Sensitivity() const { return m_sensitivity; }
    void Sensitivity(int sensitivity) { m_sensitivity = sensitivity; }

  private:
    int m_direction = 0;
    int m_sensitivity = 5;
};
using Rules = std::vector<Rule*>;

class Config : public frame::EngineBehaviorConfig<Rule>
{
  public:
    static std::string Id() { return "com.varlo.rule.directionalmotion"; }
    static std::string Alias() { return frame::AliasOf(Id()); }

    int ObjectSpeed() const { return m_objectSpeed; }
    void ObjectSpeed(int speed) { m_objectSpeed = speed; }

  private:
    int m_objectSpeed = 5;
};

} // namespace profile_conversion::directionalmotion
