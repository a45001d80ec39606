#pragma once

#include <string>
#include <thread>

// The service of an API library, on a thread of its own. The library stays loaded for good: its threads and
// thread-local data may outlive the service.
class Service
{
  public:
    // Starts the service of the library in `file`. Sends the signal `ended` to this process once the service
    // has ended by itself or was ended. Throws std::runtime_error, with the file and the reason, if the file
    // can't be loaded or lacks an entry point.
    Service(const std::string& file, int ended);

    // Ends the service and waits for it. The caller has made sure that no request is in progress.
    void End();
    // Why the service ended by itself, for a person. Only after End().
    std::string Failure() const;

  private:
    using Entry = bool (*)();

    void Run(int ended);

    Entry m_start;
    Entry m_shutdown;
    std::string m_exception;
    std::thread m_thread;
};
