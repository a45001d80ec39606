#pragma once

#include "store/Store.h"
#include "threads/LruCache.h"

#include <cstddef>
#include <cstdint>
#include <functional>
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
        if (const auto kept = m_kept.Find(key); kept && kept->version == version)
            return kept->value;
        auto value = std::make_shared<const Value>(read());
        m_kept.Put(key, {version, value}, size(*value));
        return value;
    }

  private:
    struct Kept
    {
        std::uint64_t version; // of the store, before it was read
        std::shared_ptr<const Value> value;
    };

    Store& m_store;
    LruCache<Key, Kept> m_kept{kMost, kMostBytes};
};

} // namespace analytics::platform
