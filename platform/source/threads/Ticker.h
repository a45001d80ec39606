#pragma once

#include "threads/Mutex.h"

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
    ~Ticker();
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

  private:
    bool EndedWithin(std::chrono::milliseconds interval);

    Mutex m_lock;
    CondVar m_ending;
    bool m_ended ANALYTICS_GUARDED_BY(m_lock) = false;
    std::thread m_thread;
};

} // namespace analytics::platform
