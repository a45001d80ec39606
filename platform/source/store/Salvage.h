#pragma once

#include <optional>
#include <set>
#include <string>
#include <tuple>

#include <map>

namespace analytics::platform
{

class StoreConnection;
class StorePages;
struct StoreRow;

// What can be read of a damaged store.
class Salvage
{
  public:
    explicit Salvage(const StorePages& pages);

    // Puts all of it into an empty store.
    void Write(StoreConnection& store) const;
    // What was saved and what was lost, as part of a sentence.
    std::string Report() const;

  private:
    struct Profile
    {
        std::string name;
        std::string preset;
    };
    struct Content
    {
        int active;
        std::string document;
    };
    using Key = std::tuple<int, int, std::string>; // profile, kind, plug-in

    void TakeRow(const StoreRow& row);
    void TakeProfile(const StoreRow& row);
    void TakeConfiguration(const StoreRow& row);
    void TakeKey(const StoreRow& row);
    void TakeState(const StoreRow& row);
    void TakeSequence(const StoreRow& row);
    bool Seen(std::int64_t profile);
    std::string Lost() const;

    std::map<int, Profile> m_profiles; // without those whose own row was lost
    std::map<Key, Content> m_configurations;
    std::set<Key> m_keys; // of configurations that were there
    std::set<int> m_seen; // profiles that were there
    int m_last = 0;       // the highest identifier that was given
    int m_unreadable = 0; // rows of which nothing is known
    bool m_state = false; // whether the three below were found
    std::optional<int> m_active;
    int m_run = 1;
    int m_md = 0;
};

} // namespace analytics::platform
