#pragma once

#include "Library.h"

#include <string>
#include <thread>

// The service on a thread of its own, from Library::start to Library::shutdown.
class Service
{
  public:
    // Sends the signal `ended` to this process once the service has ended by itself or was ended.
    Service(const Library& library, int ended);

    // Ends the service and waits for it. The caller has made sure that no request is in progress.
    void End();
    // Why the service ended by itself, for a person. Only after End().
    std::string Failure() const;

  private:
    void Run(int ended);

    Library m_library;
    std::string m_exception;
    std::thread m_thread;
};
