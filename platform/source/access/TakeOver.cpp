#include "access/TakeOver.h"

#include "files/StandardError.h"
#include "threads/Lock.h"

#include <chrono>
#include <map>

namespace tarno::osa
{
using analytics::platform::Hold;
namespace
{

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kQuiet(10);

// What was said a short while ago.
class Said
{
  public:
    void Say(const std::string& sentence)
    {
        const Hold hold(m_lock);
        const Clock::time_point now = Clock::now();
        std::erase_if(m_until, [now](const auto& entry) { return entry.second <= now; });
        if (m_until.emplace(sentence, now + kQuiet).second)
            analytics::platform::Say(sentence);
    }

  private:
    analytics::platform::Lock m_lock;
    std::map<std::string, Clock::time_point> m_until ANALYTICS_GUARDED_BY(m_lock);
};

Said& TheSaid()
{
    static Said said;
    return said;
}

} // namespace

const std::string& TextOf(const analytics::platform::WatchedFile& file)
{
    if (!file.Last().failure.empty())
        throw AccessFault(
            file.Path() + ": it can't be read (" + file.Last().failure +
            "); make it readable for the service, with \"chgrp varlo-analytics FILE\" and \"chmod 640 "
            "FILE\" for one that others may not read, or name another in the settings document");
    return file.Last().text;
}

void SayTakenOver(const std::string& path) { TheSaid().Say(path + ": what is in it now was taken over."); }

void SayNotTakenOver(const AccessFault& fault)
{
    TheSaid().Say(std::string(fault.what()) + ". What was read before stays in force.");
}

void SayLeftOut(const std::string& sentence) { TheSaid().Say(sentence + ". The line is left out."); }

} // namespace tarno::osa
