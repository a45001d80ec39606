#pragma once

#include <analytics/Platform.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

// The request that a thread serves, from the beginning of its RequestScope to the end.
namespace analytics::platform
{

// What a caller may do; each may do what the one before it may.
enum class Role
{
    Viewer,       // read
    Operator,     // also run and stop
    Administrator // also change profiles
};
// As settings, audit lines and answers write it.
inline const char* NameOf(Role role)
{
    constexpr const char* kNames[] = {"viewer", "operator", "administrator"};
    return kNames[static_cast<int>(role)];
}

// Who sent the request.
struct Caller
{
    std::string name; // user name, or "CN=..." of a client certificate; empty: nobody was asked
    Role role = Role::Administrator;
    std::string peer;    // numeric address, empty without one
    std::string request; // 8 hexadecimal digits
};

// Under a new number. `name` is as it was proved or claimed.
Caller NewCaller(const std::string& name, const std::string& peer);

// Null outside of a request, and in one whose host asks nobody who he is: then all is allowed. Lives as long
// as the scope.
const Caller* CurrentCaller();

// Another number for each request; 0 if this thread serves none.
std::uint64_t CurrentRequest();

// Calls `action` on this thread when its RequestScope ends, the last that was given first. Only within a
// request. It must not throw.
void AtRequestEnd(std::function<void()> action);

// What a thread asks for once in a request and keeps until the next one: an instance is thread_local.
// What `ask` throws isn't kept.
template <class T>
class OncePerRequest
{
  public:
    template <class Ask>
    std::shared_ptr<T> Get(Ask ask)
    {
        const std::uint64_t request = CurrentRequest();
        if (request == 0)
            return ask();
        if (request != m_request)
        {
            m_value = ask();
            m_request = request;
        }
        return m_value;
    }

  private:
    std::uint64_t m_request = 0;
    std::shared_ptr<T> m_value;
};

} // namespace analytics::platform
