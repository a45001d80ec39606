#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>

namespace analytics::platform
{

// Values by name, each until its time. Of more than kMost the one whose time is up first makes room. One
// thread at a time.
template <class Value, std::size_t kMost>
class TimedCache
{
  public:
    using Time = std::chrono::steady_clock::time_point;

    // Null if there is none, or its time is up. Until the next Put().
    Value* Find(const std::string& name, Time now)
    {
        const auto found = m_entries.find(name);
        return found == m_entries.end() || found->second.until <= now ? nullptr : &found->second.value;
    }
    void Put(const std::string& name, Value value, Time until)
    {
        const auto ends = [](const auto& entry) { return entry.second.until; };
        if (m_entries.size() >= kMost && !m_entries.contains(name))
            m_entries.erase(std::ranges::min_element(m_entries, {}, ends));
        m_entries.insert_or_assign(name, Entry{std::move(value), until});
    }
    void Clear() { m_entries.clear(); }

  private:
    struct Entry
    {
        Value value;
        Time until;
    };
    std::unordered_map<std::string, Entry> m_entries;
};

} // namespace analytics::platform
