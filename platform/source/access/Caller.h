#pragma once

#include <string>

namespace analytics::platform
{

// What a caller may do; each may do what the one before it may.
enum class Role
{
    Viewer,       // read
    Operator,     // also run and stop
    Administrator // also change profiles
};

// Who sent the request that is served.
struct Caller
{
    std::string name; // user name, or "CN=..." of a client certificate; empty: nobody was asked
    Role role = Role::Administrator;
    std::string peer;    // numeric address, empty without one
    std::string request; // 8 hexadecimal digits
};

// That of this thread's RequestScope. Null outside of a request, and in one whose host asks nobody who he is:
// then all is allowed. Lives as long as the scope.
const Caller* CurrentCaller();

} // namespace analytics::platform
