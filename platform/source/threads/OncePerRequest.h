#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace analytics::platform
{

// The request that this thread serves, another number for each; 0 if it serves none. See RequestScope.
std::uint64_t RequestOfThread();

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
        const std::uint64_t request = RequestOfThread();
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
