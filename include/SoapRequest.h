#pragma once

#include <atomic>
#include <string>

struct soap;

namespace analytics
{
class ProfileManager;
}

namespace analyticsapi
{

// The base of all operation requests. A handler builds one on its stack for one call, runs Execute()
// and reads the result. One request is used by one thread; many may run at a time.
class SoapRequest
{
  public:
    virtual ~SoapRequest();
    SoapRequest(const SoapRequest&) = delete;
    SoapRequest& operator=(const SoapRequest&) = delete;

    // Runs the operation and returns gSOAP's status: 0, or what is to be handed back to the dispatcher.
    // Every exception has become a fault in the context by then; nothing is thrown.
    int Execute();

    // The process's one manager, made at the first call. The first call must be over before any other
    // thread comes: there is no lock.
    static analytics::ProfileManager* GetProfileManager();
    // Destroys the manager; always true. No request may be running.
    static bool Shutdown();

  protected:
    // Copies `name`, the operation's; `soap` is the connection's context and not owned.
    SoapRequest(const char* name, soap* soap);

    // The operation itself: 0 for success, -1 to end the connection without an answer, or the status of
    // a fault that it has set. May throw.
    virtual int DoExecute() = 0;

    soap* const m_soap;
    const std::string m_name;
    static std::atomic<analytics::ProfileManager*> m_profileManager; // owned; null until first needed
};

} // namespace analyticsapi
