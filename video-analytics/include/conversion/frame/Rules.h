#pragma once

#include <AlarmSeverity.h>
#include <Shapes.h>

#include <string>

namespace profile_conversion::frame
{

// What the rules of all families have in common. No number is held to a range: clients are told the
// bounds and may pass them.
class ZoneRule
{
  public:
    std::string Name() const { return m_name; }
    void Name(const std::string& name) { m_name = name; }
    bool EnableAlarm() const { return m_enableAlarm; }
    void EnableAlarm(bool enable) { m_enableAlarm = enable; }
    analytics::AlarmSeverity Severity() const { return m_severity; }
    void Severity(analytics::AlarmSeverity severity) { m_severity = severity; }
    int DwellTime() const { return m_dwellTime; }
    void DwellTime(int seconds) { m_dwellTime = seconds; }
    const Points& Zone() const { return m_zone; }
    void Zone(const Points& zone) { m_zone = zone; }

  protected:
    ~ZoneRule() = default;

  private:
    std::string m_name;
    bool m_enableAlarm = false;
    analytics::AlarmSeverity m_severity = analytics::Minor;
    int m_dwellTime = 5;
    Points m_zone;
};

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
