#pragma once

#include "store/Store.h"
#include "threads/Mutex.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>

namespace analytics::platform
{

// What was last read of a store, by a key, for as long as the store doesn't change. Bounded: those that
// were used last stay. Any thread.
template <class Value, class Key = int>
class ReadCache
{
  public:
    static constexpr std::size_t kMost = 16; // entries
    static constexpr std::size_t kMostBytes = std::size_t{512} * 1024;

    explicit ReadCache(Store& store) : m_store(store) {}

    // `read` reads the value from the store if it isn't here; what it throws passes through, and so does what
    // the look at the store throws. `size` tells the bytes of a value.
    std::shared_ptr<const Value> Get(
        const Key& key, const std::function<Value()>& read,
        const std::function<std::size_t(const Value&)>& size = [](const Value&) { return sizeof(Value); })
    {
        m_store.Look();
        const std::uint64_t version = m_store.Version();
        if (auto found = Find(key, version))
            return found;
        auto value = std::make_shared<const Value>(read());
        Keep({key, version, size(*value), value});
        return value;
    }

  private:
    struct Entry
    {
        Key key;
        std::uint64_t version; // of the store, before it was read
        std::size_t bytes;
        std::shared_ptr<const Value> value;
    };

    std::shared_ptr<const Value> Find(const Key& key, std::uint64_t version)
    {
        const MutexLock hold(m_lock);
        for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry)
            if (entry->key == key && entry->version == version)
            {
                m_entries.splice(m_entries.begin(), m_entries, entry);
                return entry->value;
            }
        return nullptr;
    }

    void Keep(Entry entry)
    {
        const MutexLock hold(m_lock);
        m_entries.remove_if([&entry](const Entry& old)
                            { return old.key == entry.key || old.version < entry.version; });
        m_entries.push_front(std::move(entry));
        std::size_t bytes = 0;
        std::size_t count = 0;
        m_entries.remove_if([&](const Entry& old)
                            { return (bytes += old.bytes) > kMostBytes || ++count > kMost; });
    }

    Store& m_store;
    Mutex m_lock;
    std::list<Entry> m_entries ANALYTICS_GUARDED_BY(m_lock); // the last one used first
};

} // namespace analytics::platform
