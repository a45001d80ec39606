#pragma once

#include <analytics/ProfileManager.h>

#include "audit/AuditTrail.h"
#include "feed/EngineFeed.h"
#include "store/ProfileConfigurations.h"
#include "store/Store.h"
#include "store/StoreFiles.h"
#include "threads/LruCache.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace analytics
{

namespace platform
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

} // namespace platform

// What the operations of ProfileManager have in common: who may change the store, the line in the audit
// trail, what the engine is shown, what was last read, and the engine's part of a behavior. That comes before
// its rule, in a call of its own; it is held until the request brings the rule, so that both are stored or
// neither. Without a rule it is stored by itself, before the request does anything else with a store, or when
// it ends. Any thread.
class ProfileStore
{
  public:
    using Operation = platform::Store::Operation;

    // Throws AnalyticsFault if the store can't be opened or another process has it. Says on standard error
    // which profiles hold more than the settings allow.
    explicit ProfileStore(const std::string& folder);
    ~ProfileStore();

    // Runs a call that changes the store, with its line in the audit trail; `change` may fill in `entry` what
    // it comes to know. ClientFault if the caller's role is less than `needed`. Always true.
    bool Audited(platform::Role needed, platform::AuditEntry& entry, const std::function<void()>& change);
    // The same for a call that is one operation on the profile of the entry; an operator's is one on the
    // camera.
    bool Change(platform::Role needed, platform::AuditEntry entry, const Operation& operation);
    // In one transaction, on a profile or on the camera as a whole. What the engine sees of it is shown on
    // return; the number of times that this has changed is stored with the change itself.
    void Commit(std::optional<int> profile, const Operation& operation);
    // The same for what may change which profiles there are, or which one is active.
    void Write(std::optional<int> profile, const Operation& operation);

    template <class Ask>
    auto Get(const Ask& ask)
    {
        StoreHeld();
        return m_store.Get(ask);
    }
    // As ReadCache::Get().
    template <class Cache, class... Arguments>
    auto Cached(Cache ProfileStore::*cache, const Arguments&... arguments)
    {
        StoreHeld();
        return *(this->*cache).Get(arguments...);
    }

    // Stores all of it or nothing; true. An empty name or preset keeps what the profile has. ClientFault if
    // there is no such profile, then with `refusal` if it isn't empty, and if the profile would hold more
    // than the settings allow.
    bool Put(platform::AuditEntry entry, const std::vector<StoredConfiguration>& configurations,
             const std::string& refusal = "", const std::string& name = "", const std::string& preset = "");

    void Require(int profile);

    // Until the end of the request; outside of one it is stored at once. ClientFault, with a line in the
    // audit trail, if it couldn't be stored; false if it holds nothing.
    bool Hold(platform::AuditEntry entry, const StoredConfiguration& engine);
    // What is held for the profile, and now the caller's.
    std::optional<StoredConfiguration> TakeHeld(int profile);

  private:
    void RequireRoom(int profile, const StoredConfiguration& configuration);
    static void StoreHeld();
    static void StoreHeldAtEnd();
    void BeginToShow();
    void CountProfiles();

    platform::LastGoodCopy m_copy;
    platform::Store m_store;
    std::optional<platform::EngineFeed> m_feed; // none: the engine is shown nothing

  public:
    platform::ReadCache<std::vector<ProfileSummary>> list{m_store};
    // By profile.
    platform::ReadCache<std::optional<ProfileSummary>> found{m_store};
    platform::ReadCache<std::string> merged{m_store};
    platform::ReadCache<std::optional<std::string>, std::tuple<int, PluginType, std::string>> documents{
        m_store};
};

} // namespace analytics
