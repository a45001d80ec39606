#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include <mutex>
#include <string>

namespace peer
{

// What the plain peer keeps: five profiles, and the last document of one behavior.

struct Row
{
    int id;
    std::string name;
    std::string preset;
};

// Makes the database with its five profiles.
void Prepare(const std::string& file);

// One worker's connection and prepared statement.
class Reader
{
  public:
    explicit Reader(const std::string& file);
    template <class Take>
    void Each(Take take)
    {
        while (m_list.executeStep())
            take(Row{m_list.getColumn(0).getInt(), m_list.getColumn(1).getString(),
                     m_list.getColumn(2).getString()});
        m_list.reset();
    }

  private:
    SQLite::Database m_database;
    SQLite::Statement m_list;
};

// The one connection that writes. Any thread.
class Writer
{
  public:
    explicit Writer(const std::string& file);
    // In one transaction, which is on the disk on return.
    void Put(int profile, const std::string& plugin, const std::string& document);

  private:
    std::mutex m_lock;
    SQLite::Database m_database;
    SQLite::Statement m_put;
};

} // namespace peer
