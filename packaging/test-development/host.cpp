// A host of another maker: it links both libraries and is told that its settings are missing.
#include <AnalyticsApi.h>
#include <analytics/Faults.h>
#include <analytics/Platform.h>

#include <iostream>

int main()
{
    analytics::platform::Configuration configuration;
    configuration.settingsFile = "/nonexistent/settings.xml";
    try
    {
        analytics::platform::Configure(configuration);
    }
    catch (const analytics::AnalyticsFault& fault)
    {
        return &StartVarloAnalyticsApi != &ShutdownVarloAnalyticsApi ? 0 : 1;
    }
    std::cerr << "settings that are missing were taken\n";
    return 1;
}
