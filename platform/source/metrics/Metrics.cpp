#include "metrics/Metrics.h"

#include "metrics/Process.h"
#include "threads/Mutex.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace analytics::platform
{
namespace
{

constexpr std::array kBounds = {0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1.0, 2.5, 10.0};
// A histogram's slots: those within each bound, all, and the sum in nanoseconds.
constexpr std::size_t kAll = kBounds.size();
constexpr std::size_t kSum = kAll + 1;
constexpr std::size_t kHistogramSlots = kSum + 1;
constexpr double kNanoseconds = 1e9;

using Count = std::atomic<std::uint64_t>;

struct Row
{
    std::string labels;
    const Gauge* gauge = nullptr;
    std::unique_ptr<Count[]> slots = {};
};

struct Family
{
    std::string help;
    const char* type = "";
    std::vector<Row> rows;
};

struct Registry
{
    Mutex lock;
    std::map<std::string, Family> families ANALYTICS_GUARDED_BY(lock);
};

// Never destroyed: a thread may count to the last.
Registry& TheRegistry()
{
    static Registry& registry = *new Registry;
    return registry;
}

// Returns the row's slots.
Count* Register(const std::string& name, const std::string& help, const char* type, Row row,
                std::size_t slots)
{
    row.slots = std::make_unique<Count[]>(slots);
    Count* const first = row.slots.get();
    Registry& registry = TheRegistry();
    const MutexLock hold(registry.lock);
    Family& family = registry.families[name];
    family.help = help;
    family.type = type;
    family.rows.push_back(std::move(row));
    return first;
}

std::string Number(double value)
{
    std::array<char, 32> room;
    const auto end = std::to_chars(room.data(), room.data() + room.size(), value).ptr;
    return std::string(room.data(), end);
}

std::string Line(const std::string& name, const std::string& labels, const std::string& value)
{
    return name + (labels.empty() ? "" : '{' + labels + '}') + ' ' + value + '\n';
}

std::string HistogramText(const std::string& name, const Row& row)
{
    const std::string before = row.labels.empty() ? "" : row.labels + ',';
    const std::string all = std::to_string(row.slots[kAll]);
    std::uint64_t within = 0;
    std::string text;
    for (std::size_t i = 0; i < kBounds.size(); ++i)
    {
        within += row.slots[i];
        text += Line(name + "_bucket", before + "le=\"" + Number(kBounds[i]) + '"', std::to_string(within));
    }
    return text + Line(name + "_bucket", before + "le=\"+Inf\"", all) +
           Line(name + "_sum", row.labels,
                Number(static_cast<double>(row.slots[kSum].load()) / kNanoseconds)) +
           Line(name + "_count", row.labels, all);
}

std::string RowText(const std::string& name, const Family& family, const Row& row)
{
    if (row.gauge != nullptr)
        return Line(name, row.labels, Number(row.gauge->Value()));
    if (family.type == std::string_view("histogram"))
        return HistogramText(name, row);
    return Line(name, row.labels, std::to_string(row.slots[0]));
}

} // namespace

Counter::Counter(const std::string& family, const std::string& help, const std::string& labels)
    : m_count(Register(family, help, "counter", {labels}, 1))
{
}

Histogram::Histogram(const std::string& family, const std::string& help, const std::string& labels)
    : m_slots(Register(family, help, "histogram", {labels}, kHistogramSlots))
{
}

void Histogram::Observe(double seconds)
{
    const auto* const bound = std::lower_bound(kBounds.begin(), kBounds.end(), seconds);
    if (bound != kBounds.end())
        ++m_slots[bound - kBounds.begin()];
    m_slots[kSum] += static_cast<std::uint64_t>(seconds * kNanoseconds);
    ++m_slots[kAll];
}

Gauge::Gauge(const std::string& family, const std::string& help, const std::string& labels)
{
    Register(family, help, "gauge", {labels, this}, 0);
}

Counter gStoreChanges("varlo_store_changes_total", "Calls that changed the profile store.");
Counter gStoreCommits("varlo_store_commits_total", "Transactions that the profile store committed.");
Counter gStoreErrors("varlo_store_errors_total", "Calls that the profile store could not do.");
Gauge gProfiles("varlo_profiles", "Profiles in the store.");
Gauge gActiveProfile("varlo_active_profile", "Number of the active profile, or -1.");
Counter gAuditErrors("varlo_audit_errors_total", "Lines of the audit trail that could not be written.");
Counter gEngineFeedErrors("varlo_engine_feed_errors_total",
                          "Attempts to write the files for the analytics engine that failed.");
Counter gRefusedByRole("varlo_access_refused_total", "Requests that were refused for who sent them.",
                       "reason=\"role\"");

std::string MetricsText()
{
    static Gauge build("varlo_build_info", "1; the version stands in the label.", "version=\"" VERSION "\"");
    build.Set(1);
    std::string text;
    Registry& registry = TheRegistry();
    {
        const MutexLock hold(registry.lock);
        for (const auto& [name, family] : registry.families)
        {
            text += "# HELP " + name + ' ' + family.help + "\n# TYPE " + name + ' ' + family.type + '\n';
            for (const Row& row : family.rows)
                text += RowText(name, family, row);
        }
    }
    return text + ProcessMetricsText();
}

} // namespace analytics::platform
