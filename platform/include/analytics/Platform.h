#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

// What a host tells this platform layer before the service starts, and asks of it while it runs.
// The API library knows nothing of this; another layer has its own ways.
namespace analytics::platform
{

struct Endpoint
{
    std::string address; // a numeric IPv4 or IPv6 address
    std::uint16_t port;  // 0 takes a free port
};

struct Configuration
{
    Configuration(); // the installed files
    std::string settingsFile;
    std::string pluginFolder;
    std::string stateFolder;        // made if missing
    std::string engineFolder;       // what the analytics engine reads; empty: that of the settings, if any
    std::optional<Endpoint> listen; // wins over the endpoint in the settings document
    // Called once a server listens, with its URL, on the thread that started it.
    std::function<void(const std::string& url)> onListening;
};

// Takes effect for all that follows. Call it before any other thread uses the platform.
// Throws AnalyticsFault, with file and line, if the settings document can't be read.
void Configure(const Configuration& configuration);

struct Caller; // who sent a request; the platform's own business

// While one lives, its thread serves one request, and sees settings and plug-ins as they were when the
// request first asked for them; without one they are looked up at each call. The server has one around
// each request. One at a time on a thread.
class RequestScope
{
  public:
    RequestScope();
    // `caller` decides what the request may change. It must outlive the scope.
    explicit RequestScope(const Caller& caller);
    ~RequestScope();
    RequestScope(const RequestScope&) = delete;
    RequestScope& operator=(const RequestScope&) = delete;
};

// Each needs no Configure(), returns a sentence on what it did, for the operator, and throws AnalyticsFault.
// What a store is replaced by was checked before, and what was there is kept beside it.
//
// Makes a copy of the profile store in `stateFolder` at `file`, which must not exist yet. A service may have
// the store open.
std::string BackUpStore(const std::string& stateFolder, const std::string& file);
// Puts such a copy in the place of the store, which no service may have open.
std::string RestoreStore(const std::string& stateFolder, const std::string& file);
// Puts the last good copy in the place of a damaged store, and does nothing to a sound one.
std::string RecoverStore(const std::string& stateFolder);

// The version of SQLite in use.
std::string StoreLibraryVersion();

// Why the profile store can't be read or written now; empty if it can, or if none is open. Any thread; it may
// wait for the disk, but for no change.
std::string StoreHealth();

// Names on standard error what isn't known in the settings document, and each mistake in it, with file and
// line, and those in the plug-ins; with `all` also the mistakes in the files that it names. Returns whether
// there was none, but for those in the plug-ins without `all`. After Configure().
bool CheckConfiguration(bool all);

// Reads settings, users, certificates and plug-ins again now, and opens the audit trail anew. What can't be
// used stays as it was, and is named on standard error unless it was a moment ago. Returns how many mistakes
// CheckConfiguration() would name. Any thread.
std::size_t Reload();

// Why the last server could not come up; empty if it did or none was started. Any thread.
std::string ServerFailure();

// Stops accepting, waits until every request in progress has been answered, `limit` at most, and
// returns whether all were. Without a running server there is nothing to wait for. Any thread.
bool DrainServer(std::chrono::milliseconds limit);

} // namespace analytics::platform
