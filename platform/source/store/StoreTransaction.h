#pragma once

#include "store/StoreConnection.h"

#include <functional>

namespace analytics::platform
{

// A commit of which nobody knows whether it has come to pass.
class UncertainCommit : public SQLite::Exception
{
  public:
    static constexpr char kAdvice[] =
        ". Whether the change was stored isn't known: look before you repeat it";

    explicit UncertainCommit(const SQLite::Exception& error) : Exception(error) {}
};

// A transaction that writes, from its begin to Commit(); without that it is taken back. Errors come as
// SQLite::Exception.
class StoreTransaction
{
  public:
    explicit StoreTransaction(StoreConnection& connection);
    ~StoreTransaction();
    StoreTransaction(const StoreTransaction&) = delete;
    StoreTransaction& operator=(const StoreTransaction&) = delete;

    // Runs a part that can be taken back by itself. False if it threw anything but SQLite::Exception, and
    // has been taken back.
    bool Try(const std::function<void(StoreConnection&)>& part);
    // On the disk on return. If it fails, nothing of it will ever be there, unless it throws UncertainCommit.
    void Commit();

  private:
    void Run(const char* sql) { Query(m_connection, sql).Run(); }

    StoreConnection& m_connection;
    bool m_open = true;
};

} // namespace analytics::platform
