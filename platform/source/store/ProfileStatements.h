#pragma once

#include "store/StoreConnection.h"

#include <optional>
#include <string>

namespace analytics
{

// Steps that several operations have inside their transactions. ClientFault if the profile doesn't
// exist.
void RequireIn(platform::StoreConnection& connection, int profile);

// Sets what is given, keeps what isn't.
void DescribeIn(platform::StoreConnection& connection, int profile, const std::optional<std::string>& name,
                const std::optional<std::string>& preset);

} // namespace analytics
