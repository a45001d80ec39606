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

} // namespace profile_conversion::frame
