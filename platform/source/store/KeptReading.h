#pragma once

#include "store/Store.h"
#include "threads/Lock.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace analytics::platform
{

// What was last read of a store, for as long as it is what is stored. Any thread.
template <class T>
class KeptReading
{
  public:
    // A program beside the service that writes to the same database shows after this time.
    static constexpr std::chrono::seconds kMostAge{1};
    // Entries of a list; longer ones are read each time.
    static constexpr std::size_t kMost = 256;

    // Throws what Store::Read() throws.
    std::shared_ptr<const T> Get(Store& store, const std::function<T(StoreConnection&)>& read)
    {
        store.Look();
        const std::uint64_t version = store.Version();
        const auto now = Clock::now();
        {
            const Hold hold(m_lock);
            if (m_value && m_version == version && now - m_read < kMostAge)
                return m_value;
        }
        const auto value = std::make_shared<T>();
        store.Read([&](StoreConnection& connection) { *value = read(connection); });
        if (IsShort(*value))
            Keep(value, version, now);
        return value;
    }

  private:
    using Clock = std::chrono::steady_clock;

    static bool IsShort(const auto&) { return true; }
    template <class Entry>
    static bool IsShort(const std::vector<Entry>& list)
    {
        return list.size() <= kMost;
    }

    void Keep(std::shared_ptr<const T> value, std::uint64_t version, Clock::time_point now)
    {
        const Hold hold(m_lock);
        m_value = std::move(value);
        m_version = version;
        m_read = now;
    }

    Lock m_lock;
    std::shared_ptr<const T> m_value ANALYTICS_GUARDED_BY(m_lock);
    std::uint64_t m_version ANALYTICS_GUARDED_BY(m_lock) = 0; // before it was read
    Clock::time_point m_read ANALYTICS_GUARDED_BY(m_lock);
};

} // namespace analytics::platform
