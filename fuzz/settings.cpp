// Settings files: read as the service reads them, at the start and at each request.

#include "Expect.h"
#include "Installation.h"

#include "access/AccessSettings.h"
#include "net/ServerSettings.h"

#include <analytics/Faults.h>
#include <analytics/Settings.h>

namespace
{
using analytics::Settings;
using fuzzing::Expect;

bool IsTrimmed(const std::string& text)
{
    return text.empty() || (!std::isspace(static_cast<unsigned char>(text.front())) &&
                            !std::isspace(static_cast<unsigned char>(text.back())));
}

void ReadAccess(const std::string& address)
{
    try
    {
        tarno::osa::CheckAccess(tarno::osa::AccessInSettings("kestrile-server"), address);
    }
    catch (const tarno::osa::AccessFault& fault)
    {
        Expect(*fault.what() != '\0', "a refusal has a reason");
    }
}

void ReadAll()
{
    for (const char* const key : {"//backlog", "//maxResource", "//maxSelectableRules/numberOfCount",
                                  "//maxSelectableRules/countOnlyConfigurable", "//none"})
    {
        const int number = Settings::GetValue(key, 7);
        Expect(number == Settings::GetValue(key, 7), "a setting stays the same", key);
        Expect(number == Settings::GetValue(key, 8) || number == 7, "a default is the one given", key);
    }
    for (const std::string& id : Settings::GetValues("//nonUserConfigurableRules/id"))
        Expect(IsTrimmed(id), "no white space surrounds a setting", id);
    Settings::MaxResource();
    const tarno::osa::Limits limits = tarno::osa::LimitsFromSettings();
    Expect(limits.maxConnections > 0 && limits.maxRequestBytes > 0 && limits.requestTime.count() > 0,
           "each limit leaves room for a request");
    const std::string address = tarno::osa::ConfiguredEndpoint("kestrile-server", 0).address;
    Expect(!address.empty(), "an endpoint has an address");
    ReadAccess(address);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static fuzzing::Installation installation;
    installation.configuration.settingsFile = installation.Path("settings.xml");
    std::ofstream(installation.Path("settings.xml"), std::ios::binary) << fuzzing::Text(data, size);
    try
    {
        installation.Use();
    }
    catch (const analytics::AnalyticsFault& fault)
    {
        Expect(std::string(fault.what()).find("settings.xml") != std::string::npos,
               "a file that can't be read is named", fault.what());
        return 0;
    }
    ReadAll();
    return 0;
}
