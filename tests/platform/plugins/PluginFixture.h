#pragma once

#include "platform/PlatformTest.h"

#include <string>

class PluginFixture : public PlatformTest
{
  protected:
    // A whole manifest; `more` goes in behind the identifiers.
    static std::string ManifestText(const std::string& id, const std::string& more = "",
                                    const std::string& type = "rule")
    {
        return "<manifest type='" + type + "'><id>" + id + "</id><alias>urn:" + id + "</alias>" + more +
               "</manifest>";
    }

    void WritePlugin(const std::string& folder, const std::string& id, const std::string& more = "",
                     const std::string& type = "rule")
    {
        Write("plugins/" + folder + "/manifest.xml", ManifestText(id, more, type));
    }
};
