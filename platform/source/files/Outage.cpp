#include "files/Outage.h"

#include "files/StandardError.h"

#include <utility>

namespace analytics::platform
{

void Outage::Begin(const std::string& sentence, Clock::time_point now)
{
    m_ongoing = true;
    if (m_told || (m_last && now - *m_last < kQuiet))
        return;
    m_told = true;
    m_last = now;
    Say(sentence);
}

void Outage::End(const std::string& sentence)
{
    m_ongoing = false;
    if (std::exchange(m_told, false))
        Say(sentence);
}

} // namespace analytics::platform
