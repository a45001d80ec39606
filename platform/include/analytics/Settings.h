#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace analytics
{

// The settings document, as the file stands at the moment of each call; while the file is missing or
// not well-formed, as it last stood. A key is a path query on it, such as "//backlog". Any operation
// may be called from any thread. Throws AnalyticsFault if the file could never be read.
class Settings
{
  public:
    // The text of the first match, white space around it removed; empty if nothing matches.
    static std::string GetValue(const std::string& key);
    // As a decimal integer; `defaultValue` if nothing matches or the text isn't a number that an int holds.
    // The second is said on standard error, once until the file changes.
    static int GetValue(const std::string& key, int defaultValue);
    // The texts of all matches, in document order.
    static std::vector<std::string> GetValues(const std::string& key);

    // The budget of resources that active plug-ins share: "//maxResource", 100 if missing.
    static std::uint32_t MaxResource();

    // The namespace prefix of engine documents, the local name of the element that holds their rules,
    // and the text that occurs in the identifier of every engine plug-in.
    static std::string OnvifPrefix();
    static std::string RulesTag();
    static std::string EnginePattern();

    Settings() = delete;
};

} // namespace analytics
