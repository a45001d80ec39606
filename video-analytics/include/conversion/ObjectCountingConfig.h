#pragma once

#include <Shapes.h>
#include <frame/BehaviorConfig.h>

namespace profile_conversion::objectcounting
{

// A zone or, with two points, a line that objects are counted in.
class Rule : public frame::AnyDirectionRule
{
  public:
    int AlarmOnCount() const { return m_alarmOnCount; }
    void AlarmOnCount(int count) { m_alarmOnCount = count; }
    bool ResetCounterOnAlarm() const { return m_resetCounterOnAlarm; }
    void ResetCounterOnAlarm(bool reset) { m_resetCounterOnAlarm = reset; }

  private:
    int m_alarmOnCount = 1;
    bool m_resetCounterOnAlarm = false;
};
using Rules = std::vector<Rule*>;

class Config : public frame::BehaviorConfig<Rule>
{
  public:
    static std::string Id() { return "com.varlo.rule.objectcounting"; }
    static std::string Alias() { return frame::AliasOf(Id()); }

    // Two opposite corners of an average object; the setter copies both.
    const Line& AvgObjectSize() const { return m_avgObjectSizeFilter; }
    void AvgObjectSize(const Line& line) { Copy(line, m_avgObjectSizeFilter); }

  private:
    Line m_avgObjectSizeFilter;
};

} // namespace profile_conversion::objectcounting
