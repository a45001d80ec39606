#pragma once

#include "net/Connection.h"

#include <analytics/Platform.h>

#include <string>

namespace tarno::osa
{

// Where a server called `address`:`port` listens. "kestrile-server" with port 0 is a name: the
// endpoint that the host was told, else the one of that name in the settings, else 127.0.0.1:8080.
// Anything else stands for itself. Throws AnalyticsFault if the settings can't be read.
analytics::platform::Endpoint ConfiguredEndpoint(const std::string& address, unsigned short port);

// Who may use that server. What the settings say holds for the named endpoint, also where the host was
// told another address; a server that stands for itself is open. Throws AccessFault if the settings or
// the files that they name can't be used, or would leave open what can be reached from outside.
Access ConfiguredAccess(const std::string& address, unsigned short port);

} // namespace tarno::osa
