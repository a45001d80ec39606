#pragma once

#include "threads/Mutex.h"

#include <algorithm>
#include <cstddef>
#include <list>
#include <optional>
#include <utility>

namespace analytics::platform
{

// Values by key, of which those that were used last stay: `most` of them, of `mostBytes` together. It looks
// through all of them, so it is for few. Any thread.
template <class Key, class Value>
class LruCache
{
  public:
    LruCache(std::size_t most, std::size_t mostBytes) : m_most(most), m_mostBytes(mostBytes) {}

    std::optional<Value> Find(const Key& key)
    {
        const MutexLock hold(m_lock);
        const auto found = std::ranges::find(m_entries, key, &Entry::key);
        if (found == m_entries.end())
            return std::nullopt;
        m_entries.splice(m_entries.begin(), m_entries, found);
        return found->value;
    }

    // In place of what the key has. A value of more than `mostBytes` isn't kept.
    void Put(Key key, Value value, std::size_t bytes)
    {
        std::list<Entry> entry; // allocated, and what goes is freed, without the lock
        entry.push_back({std::move(key), std::move(value), bytes});
        std::list<Entry> gone;
        const MutexLock hold(m_lock);
        if (const auto old = std::ranges::find(m_entries, entry.front().key, &Entry::key);
            old != m_entries.end())
            gone.splice(gone.end(), m_entries, old);
        if (bytes <= m_mostBytes)
            m_entries.splice(m_entries.begin(), entry);
        std::size_t sum = 0;
        std::size_t count = 0;
        const auto tooMany = [&](const Entry& each)
        { return (sum += each.bytes) > m_mostBytes || ++count > m_most; };
        gone.splice(gone.end(), m_entries, std::ranges::find_if(m_entries, tooMany), m_entries.end());
    }

  private:
    struct Entry
    {
        Key key;
        Value value;
        std::size_t bytes;
    };

    const std::size_t m_most;
    const std::size_t m_mostBytes;
    Mutex m_lock;
    std::list<Entry> m_entries ANALYTICS_GUARDED_BY(m_lock); // the one used last first
};

} // namespace analytics::platform
