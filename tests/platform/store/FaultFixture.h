#pragma once

#include "FaultyFiles.h"
#include "StoreFixture.h"

#include <string>
#include <vector>

// A store on files whose calls can be made to fail, filled with a little of everything.
class FaultFixture : public StoreFixture
{
  protected:
    struct Operation
    {
        const char* name;
        std::function<void(analytics::ProfileManager&)> run;
    };

    FaultFixture();
    ~FaultFixture() override;

    // Back to the filled store, closed and opened again.
    void Restore();
    // All that a client could read.
    static std::string Dump(analytics::ProfileManager& manager);
    std::string Dump() const { return Dump(*m_manager); }
    // The same after a restart on a copy of the files as they are now, as after SIGKILL.
    std::string DumpAfterKill();
    // The files as they are now, at another place; what a store there holds.
    void CopyStore(const std::string& folder) const;
    std::string DumpOf(const std::string& folder);

    static const std::vector<Operation> kChanges;
};
