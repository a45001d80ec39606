#include "PeerStore.h"

#include <sqlite3.h>

namespace peer
{
namespace
{
constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
constexpr const char* kSchema = R"(
PRAGMA journal_mode = WAL;
CREATE TABLE profile (id INTEGER PRIMARY KEY, name TEXT NOT NULL, preset TEXT NOT NULL);
INSERT INTO profile VALUES (1, 'Day', ''), (2, 'Night', ''), (3, 'Rain', ''), (4, 'Weekend', ''), (5, 'Test', '');
CREATE TABLE configuration (profile INTEGER, plugin TEXT, document TEXT, PRIMARY KEY (profile, plugin));
)";
} // namespace

void Prepare(const std::string& file) { SQLite::Database(file, kFlags | SQLITE_OPEN_CREATE).exec(kSchema); }

Reader::Reader(const std::string& file)
    : m_database(file, kFlags), m_list(m_database, "SELECT id, name, preset FROM profile ORDER BY id")
{
}

Writer::Writer(const std::string& file)
    : m_database(file, kFlags),
      m_put(m_database, "INSERT INTO configuration VALUES (?, ?, ?)"
                        " ON CONFLICT DO UPDATE SET document = excluded.document")
{
    m_database.exec("PRAGMA synchronous = FULL");
}

void Writer::Put(int profile, const std::string& plugin, const std::string& document)
{
    const std::lock_guard<std::mutex> hold(m_lock);
    m_put.bind(1, profile);
    m_put.bindNoCopy(2, plugin);
    m_put.bindNoCopy(3, document);
    m_put.exec();
    m_put.reset();
}

} // namespace peer
