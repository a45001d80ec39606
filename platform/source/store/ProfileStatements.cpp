#include "store/ProfileStatements.h"

#include <analytics/Faults.h>

namespace analytics
{
using platform::Query;
using platform::StoreConnection;

void RequireIn(StoreConnection& connection, int profile)
{
    if (!Query(connection, "SELECT 1 FROM profile WHERE id = ?", profile).Next())
        throw ClientFault("Profile " + std::to_string(profile) + " does not exist");
}

void DescribeIn(StoreConnection& connection, int profile, const std::optional<std::string>& name,
                const std::optional<std::string>& preset)
{
    RequireIn(connection, profile);
    if (name)
        Query(connection, "UPDATE profile SET name = ? WHERE id = ?", *name, profile).Run();
    if (preset)
        Query(connection, "UPDATE profile SET preset = ? WHERE id = ?", *preset, profile).Run();
}

} // namespace analytics
