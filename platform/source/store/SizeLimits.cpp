#include "store/SizeLimits.h"

#include <analytics/Faults.h>
#include <analytics/PluginManager.h>
#include <analytics/Settings.h>

#include "files/StandardError.h"
#include "request/DocumentLimit.h"
#include "store/Store.h"
#include "store/StoreConnection.h"
#include "xml/Reader.h"
#include "xml/Text.h"

#include <algorithm>
#include <set>

namespace analytics::platform
{
namespace
{
constexpr int kProfileBytes = 4'194'304;
constexpr std::size_t kTextBytes = 255;     // of a name or a preset
constexpr std::size_t kShortestElement = 4; // bytes: "<a/>"

constexpr const char* kLargeProfiles = "SELECT profile, sum(length(CAST(document AS BLOB))) AS bytes"
                                       " FROM configuration GROUP BY profile HAVING bytes > ?";
constexpr const char* kLargeDocuments =
    "SELECT profile, plugin, document FROM configuration WHERE length(document) > ?";

// What isn't XML has no elements: a behavior may be stored as it came.
bool HasMoreElements(const std::string& text, std::size_t most)
{
    if (text.size() <= most * kShortestElement ||
        static_cast<std::size_t>(std::ranges::count(text, '<')) <= most)
        return false;
    xml::SyntaxError ignored;
    const auto survey = xml::Check(text, ignored);
    return survey && survey->elements > most;
}

std::string TextRefusal(const std::string& what, const std::string& text)
{
    if (text.size() > kTextBytes)
        return what + " is longer than " + std::to_string(kTextBytes) + " bytes";
    return xml::IsXmlText(text) ? "" : what + " holds a character that XML does not allow";
}
} // namespace

std::string NameRefusal(const std::string& name) { return TextRefusal("The profile name", name); }
std::string PresetRefusal(const std::string& preset) { return TextRefusal("The camera preset", preset); }

std::string DocumentRefusal(const std::string& word, const std::string& config)
{
    const std::size_t most = DocumentElements();
    if (DocumentIsTooLarge() || HasMoreElements(config, most))
        return "The " + word + " document has more than " + std::to_string(most) + " elements";
    return config.empty() ? "The " + word + " document could not be read" : "";
}

std::int64_t ProfileBytes()
{
    const int bytes = Settings::GetValue("//limits/profileBytes", kProfileBytes);
    return bytes > 0 ? bytes : kProfileBytes;
}

void RequireStorable(std::int64_t bytes, std::int64_t limit)
{
    if (bytes > limit)
        throw ClientFault("The profile would hold more than " + std::to_string(limit) + " bytes");
}

void RequireReadable(int profile, std::int64_t bytes)
{
    const std::int64_t limit = ProfileBytes();
    if (bytes > limit)
        throw AnalyticsFault("Profile " + std::to_string(profile) + " holds " + std::to_string(bytes) +
                             " bytes, more than the " + std::to_string(limit) +
                             " that can be read; delete behaviors of it");
}

Manifest ManifestOf(const std::string& id)
{
    Manifest manifest;
    PluginManager().GetManifest(manifest, id);
    return manifest;
}

std::uint64_t CostOf(const std::vector<std::string>& rules)
{
    std::set<std::string> counted;
    std::uint64_t sum = 0;
    const auto add = [&](const Manifest& manifest)
    {
        if (counted.insert(manifest.Id()).second)
            sum += manifest.ResourceRequirement();
    };
    for (const std::string& rule : rules)
    {
        const Manifest manifest = ManifestOf(rule);
        add(manifest);
        for (const std::string& dependency : manifest.Dependencies())
            add(ManifestOf(dependency));
    }
    return sum;
}

void ReportOversize(Store& store)
{
    const std::int64_t bytes = ProfileBytes();
    const std::size_t elements = DocumentElements();
    store.Read(
        [&](StoreConnection& connection)
        {
            Query profile(connection, kLargeProfiles, bytes);
            while (profile.Next())
                Say("Profile " + profile.Text(0) + " holds " + profile.Text(1) + " bytes, more than the " +
                    std::to_string(bytes) +
                    " of limits/profileBytes: it can't be read until behaviors are deleted or the limit is "
                    "raised.");
            Query document(connection, kLargeDocuments,
                           static_cast<std::int64_t>(elements * kShortestElement));
            while (document.Next())
                if (HasMoreElements(document.Text(2), elements))
                    Say("Profile " + document.Text(0) + " holds a document of " + document.Text(1) +
                        " with more than the " + std::to_string(elements) +
                        " elements of limits/documentElements: it can be read, but not stored again.");
        });
}

} // namespace analytics::platform
