#include "store/Salvage.h"

#include <analytics/Manifest.h>
#include <analytics/ProfileDoc.h>

#include "store/StoreConnection.h"
#include "store/StoreRows.h"
#include "store/StoredText.h"

#include <limits>

namespace analytics::platform
{
namespace
{
// A row belongs to the table that has its values: one letter each, for a null, a number or a text.
std::string ShapeOf(const StoreRow& row)
{
    std::string shape = row.key ? "key " : "";
    for (const StoreValue& value : row.values)
        shape += "0nt"[value.index()];
    return shape;
}

std::int64_t NumberOf(const StoreRow& row, std::size_t column)
{
    return std::get<std::int64_t>(row.values[column]);
}
const std::string& TextOf(const StoreRow& row, std::size_t column)
{
    return std::get<std::string>(row.values[column]);
}

bool IsFlag(std::int64_t number) { return number == 0 || number == 1; }
bool IsKind(std::int64_t number) { return number == EnginePlugin || number == RulePlugin; }
bool IsReadable(const std::string& document)
{
    return document.empty() || ProfileDoc().ParseString(document);
}

std::string Count(std::size_t number, const std::string& one, const std::string& many)
{
    return std::to_string(number) + " " + (number == 1 ? one : many);
}
std::string Count(std::size_t number, const std::string& one) { return Count(number, one, one + "s"); }
} // namespace

Salvage::Salvage(const StorePages& pages)
{
    m_unreadable = ReadStoreRows(pages, [this](const StoreRow& row) { TakeRow(row); });
}

void Salvage::TakeRow(const StoreRow& row)
{
    using Take = void (Salvage::*)(const StoreRow&);
    static const std::map<std::string, Take> kTables = {
        {"0tt", &Salvage::TakeProfile},  {"nntnt", &Salvage::TakeConfiguration},
        {"key nntn", &Salvage::TakeKey}, {"0nnn", &Salvage::TakeState},
        {"00nn", &Salvage::TakeState},   {"tn", &Salvage::TakeSequence},
    };
    const auto table = kTables.find(ShapeOf(row));
    if (table != kTables.end())
        (this->*table->second)(row);
}

// False for what can't be an identifier.
bool Salvage::Seen(std::int64_t profile)
{
    if (profile < 1 || profile > std::numeric_limits<int>::max())
        return false;
    m_seen.insert(static_cast<int>(profile));
    m_last = std::max(m_last, static_cast<int>(profile));
    return true;
}

void Salvage::TakeProfile(const StoreRow& row)
{
    if (Seen(row.number) && NameRefusal(TextOf(row, 1)).empty() && PresetRefusal(TextOf(row, 2)).empty())
        m_profiles.emplace(row.number, Profile{TextOf(row, 1), TextOf(row, 2)});
}

void Salvage::TakeConfiguration(const StoreRow& row)
{
    if (!IsKind(NumberOf(row, 1)) || !IsFlag(NumberOf(row, 3)) || !Seen(NumberOf(row, 0)))
        return;
    const Key key(NumberOf(row, 0), NumberOf(row, 1), TextOf(row, 2));
    m_keys.insert(key);
    if (IsReadable(TextOf(row, 4)))
        m_configurations.emplace(key, Content{static_cast<int>(NumberOf(row, 3)), TextOf(row, 4)});
}

void Salvage::TakeKey(const StoreRow& row)
{
    if (IsKind(NumberOf(row, 1)) && Seen(NumberOf(row, 0)))
        m_keys.emplace(NumberOf(row, 0), NumberOf(row, 1), TextOf(row, 2));
}

void Salvage::TakeState(const StoreRow& row)
{
    if (!IsFlag(NumberOf(row, 2)) || !IsFlag(NumberOf(row, 3)))
        return;
    m_state = true;
    m_run = static_cast<int>(NumberOf(row, 2));
    m_md = static_cast<int>(NumberOf(row, 3));
    const std::int64_t* const active = std::get_if<std::int64_t>(&row.values[1]);
    if (active != nullptr && Seen(*active))
        m_active = static_cast<int>(*active);
}

void Salvage::TakeSequence(const StoreRow& row)
{
    const std::int64_t last = NumberOf(row, 1);
    if (TextOf(row, 0) == "profile" && last >= 0 && last <= std::numeric_limits<int>::max())
        m_last = std::max(m_last, static_cast<int>(last));
}

// A profile of which only configurations are left comes back with an empty name.
void Salvage::Write(StoreConnection& store) const
{
    SQLite::Transaction transaction(store.Database(), SQLite::TransactionBehavior::IMMEDIATE);
    for (const int id : m_seen)
    {
        const auto found = m_profiles.find(id);
        const Profile profile = found == m_profiles.end() ? Profile() : found->second;
        Query(store, "INSERT INTO profile VALUES (?, ?, ?)", id, profile.name, profile.preset).Run();
    }
    for (const auto& [key, content] : m_configurations)
    {
        const auto& [profile, kind, plugin] = key;
        Query(store, "INSERT INTO configuration VALUES (?, ?, ?, ?, ?)", profile, kind, plugin,
              content.active, content.document)
            .Run();
    }
    Query(store, "UPDATE state SET analytics_run = ?, md_active = ?", m_run, m_md).Run();
    if (m_active)
        Query(store, "UPDATE state SET active_profile = ?", *m_active).Run();
    // The row is there from the first profile on; an identifier that was given is never given again.
    if (m_seen.empty() && m_last > 0)
        Query(store, "INSERT INTO sqlite_sequence VALUES ('profile', ?)", m_last).Run();
    Query(store, "UPDATE sqlite_sequence SET seq = ? WHERE name = 'profile'", m_last).Run();
    transaction.commit();
}

std::string Salvage::Lost() const
{
    std::string lost;
    const auto add = [&lost](const std::string& what) { lost += (lost.empty() ? "" : ", ") + what; };
    const std::size_t unnamed = m_seen.size() - m_profiles.size();
    if (unnamed > 0)
        add("the name" + std::string(unnamed == 1 ? "" : "s") + " of " + Count(unnamed, "profile"));
    if (m_keys.size() > m_configurations.size())
        add(Count(m_keys.size() - m_configurations.size(), "configuration"));
    if (!m_state)
        add("which profile was active and what was switched on");
    if (m_unreadable > 0)
        add(Count(static_cast<std::size_t>(m_unreadable), "entry", "entries") + " that can't be read");
    return lost.empty() ? "nothing that left a trace" : lost;
}

std::string Salvage::Report() const
{
    return "saved " + Count(m_seen.size(), "profile") + " and " +
           Count(m_configurations.size(), "configuration") + "; lost: " + Lost();
}

} // namespace analytics::platform
