#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace analytics::platform
{

// Calls something once in each interval, on a thread of its own, from its construction to its destruction.
// What it calls throws nothing, and finds everything alive until the destructor has returned.
class Ticker
{
  public:
    Ticker(std::chrono::milliseconds interval, std::function<void()> tick);

  private:
    std::jthread m_thread;
};

} // namespace analytics::platform
