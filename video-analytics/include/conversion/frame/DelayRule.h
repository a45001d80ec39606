#pragma once

#include <frame/ZoneRule.h>

namespace profile_conversion::frame
{

// A rule with an alarm delay, which the families start from different values.
template <int kAlarmDelay>
class DelayRule : public ZoneRule
{
  public:
    int AlarmDelay() const { return m_alarmDelay; }
    void AlarmDelay(int seconds) { m_alarmDelay = seconds; }

  protected:
    ~DelayRule() = default;

  private:
    int m_alarmDelay = kAlarmDelay;
};

} // namespace profile_conversion::frame
