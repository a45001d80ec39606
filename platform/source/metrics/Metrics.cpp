#include "metrics/Metrics.h"

#include "threads/Mutex.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <vector>

namespace analytics::platform
{
namespace
{

constexpr std::size_t kSlots = 512; // of all counters and histograms; 4 KiB a thread
constexpr std::array kBounds = {0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1.0, 2.5, 10.0};
// A histogram's slots: those within each bound, all, and the sum in nanoseconds.
constexpr std::size_t kAll = kBounds.size();
constexpr std::size_t kSum = kAll + 1;
constexpr std::size_t kHistogramSlots = kSum + 1;
constexpr double kNanoseconds = 1e9;

struct Counts;

struct Row
{
    std::string labels;
    std::size_t slot = 0;
    const Gauge* gauge = nullptr;
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
    std::size_t slots ANALYTICS_GUARDED_BY(lock) = 0; // in use
    std::set<const Counts*> threads ANALYTICS_GUARDED_BY(lock);
    std::array<std::uint64_t, kSlots> ended ANALYTICS_GUARDED_BY(lock) = {}; // by threads that are gone

    std::uint64_t Sum(std::size_t slot) const ANALYTICS_REQUIRES(lock);
};

// Never destroyed: threads may end after it.
Registry& TheRegistry()
{
    static Registry& registry = *new Registry;
    return registry;
}

// What one thread has counted. Only that thread writes.
struct Counts
{
    std::array<std::atomic<std::uint64_t>, kSlots> values = {};

    Counts()
    {
        Registry& registry = TheRegistry();
        const MutexLock hold(registry.lock);
        registry.threads.insert(this);
    }
    ~Counts()
    {
        Registry& registry = TheRegistry();
        const MutexLock hold(registry.lock);
        for (std::size_t slot = 0; slot < kSlots; ++slot)
            registry.ended[slot] += values[slot];
        registry.threads.erase(this);
    }
    void Add(std::size_t slot, std::uint64_t count)
    {
        auto& value = values[slot];
        value.store(value.load(std::memory_order_relaxed) + count, std::memory_order_relaxed);
    }
};

Counts& OfThisThread()
{
    thread_local Counts counts;
    return counts;
}

std::uint64_t Registry::Sum(std::size_t slot) const
{
    std::uint64_t sum = ended[slot];
    for (const Counts* const thread : threads)
        sum += thread->values[slot].load(std::memory_order_relaxed);
    return sum;
}

// Returns the first of `slots` new ones.
std::size_t Register(const std::string& name, const std::string& help, const char* type, Row row,
                     std::size_t slots)
{
    Registry& registry = TheRegistry();
    const MutexLock hold(registry.lock);
    row.slot = registry.slots;
    registry.slots += slots;
    assert(registry.slots <= kSlots);
    Family& family = registry.families[name];
    family.help = help;
    family.type = type;
    family.rows.push_back(row);
    return row.slot;
}

std::string Number(double value)
{
    std::array<char, 32> room;
    const auto end = std::to_chars(room.data(), room.data() + room.size(), value).ptr;
    return std::string(room.data(), end);
}

std::string Head(const std::string& name, const char* type, const std::string& help)
{
    return "# HELP " + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
}

std::string Line(const std::string& name, const std::string& labels, const std::string& value)
{
    return name + (labels.empty() ? "" : '{' + labels + '}') + ' ' + value + '\n';
}

std::string HistogramText(const Registry& registry, const std::string& name, const Row& row)
    ANALYTICS_REQUIRES(registry.lock)
{
    const std::string before = row.labels.empty() ? "" : row.labels + ',';
    const std::string all = std::to_string(registry.Sum(row.slot + kAll));
    std::uint64_t within = 0;
    std::string text;
    for (std::size_t i = 0; i < kBounds.size(); ++i)
    {
        within += registry.Sum(row.slot + i);
        text += Line(name + "_bucket", before + "le=\"" + Number(kBounds[i]) + '"', std::to_string(within));
    }
    return text + Line(name + "_bucket", before + "le=\"+Inf\"", all) +
           Line(name + "_sum", row.labels,
                Number(static_cast<double>(registry.Sum(row.slot + kSum)) / kNanoseconds)) +
           Line(name + "_count", row.labels, all);
}

std::string RowText(const Registry& registry, const std::string& name, const Family& family, const Row& row)
    ANALYTICS_REQUIRES(registry.lock)
{
    if (row.gauge != nullptr)
        return Line(name, row.labels, Number(row.gauge->Value()));
    if (family.type == std::string_view("histogram"))
        return HistogramText(registry, name, row);
    return Line(name, row.labels, std::to_string(registry.Sum(row.slot)));
}

// The fields of /proc/self/stat behind the program's name, which may hold spaces: the third one is the first.
std::vector<double> StatFields()
{
    std::ifstream file("/proc/self/stat");
    std::string text((std::istreambuf_iterator<char>(file)), {});
    const std::size_t end = text.rfind(") ");
    if (end == std::string::npos)
        return {};
    std::istringstream rest(text.substr(end + 4)); // behind the state, a letter
    return {std::istream_iterator<double>(rest), {}};
}

// By their numbers in proc(5).
enum Field
{
    kFirst = 4,
    kUserTime = 14,
    kSystemTime = 15,
    kThreads = 20,
    kStartTime = 22,
    kVirtualBytes = 23,
    kResidentPages = 24
};

// When the system was started, in seconds since 1970.
double BootTime()
{
    timespec now = {};
    timespec up = {};
    clock_gettime(CLOCK_REALTIME, &now);
    clock_gettime(CLOCK_BOOTTIME, &up);
    return static_cast<double>(now.tv_sec - up.tv_sec) + static_cast<double>(now.tv_nsec - up.tv_nsec) / 1e9;
}

std::ptrdiff_t OpenFiles()
{
    std::error_code error;
    const std::filesystem::directory_iterator files("/proc/self/fd", error);
    return error ? 0 : std::distance(begin(files), end(files)) - 1; // without the one of the iterator itself
}

// A family of one row without labels.
void Add(std::string& text, const std::string& name, const char* type, const std::string& help, double value)
{
    text += Head(name, type, help) + Line(name, "", Number(value));
}

// The system's figures of this process, under the names that Prometheus' clients have in common. What can't
// be read is left out.
std::string ProcessText()
{
    std::string text;
    rlimit files = {};
    Add(text, "process_open_fds", "gauge", "Number of open file descriptors.",
        static_cast<double>(OpenFiles()));
    if (getrlimit(RLIMIT_NOFILE, &files) == 0)
        Add(text, "process_max_fds", "gauge", "Maximum number of open file descriptors.",
            static_cast<double>(files.rlim_cur));
    const std::vector<double> stat = StatFields();
    if (stat.size() <= kResidentPages - kFirst)
        return text;
    const auto field = [&stat](Field number) { return stat[static_cast<std::size_t>(number - kFirst)]; };
    const auto ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
    static const double started = BootTime() + field(kStartTime) / ticks;
    Add(text, "process_cpu_seconds_total", "counter", "Total user and system CPU time spent in seconds.",
        (field(kUserTime) + field(kSystemTime)) / ticks);
    Add(text, "process_resident_memory_bytes", "gauge", "Resident memory size in bytes.",
        field(kResidentPages) * static_cast<double>(sysconf(_SC_PAGESIZE)));
    Add(text, "process_virtual_memory_bytes", "gauge", "Virtual memory size in bytes.", field(kVirtualBytes));
    Add(text, "process_threads", "gauge", "Number of threads.", field(kThreads));
    Add(text, "process_start_time_seconds", "gauge", "Start time of the process since unix epoch in seconds.",
        started);
    return text;
}

} // namespace

Counter::Counter(const std::string& family, const std::string& help, const std::string& labels)
    : m_slot(Register(family, help, "counter", {labels}, 1))
{
}

void Counter::Add(std::uint64_t count) { OfThisThread().Add(m_slot, count); }

std::uint64_t Counter::Value() const
{
    Registry& registry = TheRegistry();
    const MutexLock hold(registry.lock);
    return registry.Sum(m_slot);
}

Histogram::Histogram(const std::string& family, const std::string& help, const std::string& labels)
    : m_slot(Register(family, help, "histogram", {labels}, kHistogramSlots))
{
}

void Histogram::Observe(double seconds)
{
    Counts& counts = OfThisThread();
    const auto* const bound = std::lower_bound(kBounds.begin(), kBounds.end(), seconds);
    if (bound != kBounds.end())
        counts.Add(m_slot + static_cast<std::size_t>(bound - kBounds.begin()), 1);
    counts.Add(m_slot + kSum, static_cast<std::uint64_t>(seconds * kNanoseconds));
    counts.Add(m_slot + kAll, 1);
}

Gauge::Gauge(const std::string& family, const std::string& help, const std::string& labels)
{
    Register(family, help, "gauge", {labels, 0, this}, 0);
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
            text += Head(name, family.type, family.help);
            for (const Row& row : family.rows)
                text += RowText(registry, name, family, row);
        }
    }
    return text + ProcessText();
}

} // namespace analytics::platform
