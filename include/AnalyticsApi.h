#pragma once

// The API library's two entry points, for the process that hosts it. Look them up with dlsym().
extern "C"
{
    // Runs the service on the calling thread and returns true when it has ended, which may be at once
    // if it could not come up: "Bind failed..." then stands on standard output. Throws what the
    // platform throws while its settings are read and its profile store is opened. Once per process:
    // after ShutdownVarloAnalyticsApi() every further start ends at once.
    bool StartVarloAnalyticsApi();

    // Makes StartVarloAnalyticsApi() return within about 2 seconds. Call it from another thread, when no
    // request is in progress any more: the shared profile manager is gone when it returns. Always true.
    bool ShutdownVarloAnalyticsApi();
}
