#include "metrics/Process.h"

#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <vector>

namespace analytics::platform
{
namespace
{

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

class Lines
{
  public:
    void Add(const char* name, const char* type, const char* help, double value)
    {
        m_text << "# HELP " << name << ' ' << help << "\n# TYPE " << name << ' ' << type << '\n'
               << name << ' ' << std::setprecision(15) << value << '\n';
    }
    std::string Text() const { return m_text.str(); }

  private:
    std::ostringstream m_text;
};

} // namespace

std::string ProcessMetricsText()
{
    Lines lines;
    rlimit files = {};
    lines.Add("process_open_fds", "gauge", "Number of open file descriptors.",
              static_cast<double>(OpenFiles()));
    if (getrlimit(RLIMIT_NOFILE, &files) == 0)
        lines.Add("process_max_fds", "gauge", "Maximum number of open file descriptors.",
                  static_cast<double>(files.rlim_cur));
    const std::vector<double> stat = StatFields();
    if (stat.size() <= kResidentPages - kFirst)
        return lines.Text();
    const auto field = [&stat](Field number) { return stat[static_cast<std::size_t>(number - kFirst)]; };
    const auto ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
    static const double started = BootTime() + field(kStartTime) / ticks;
    lines.Add("process_cpu_seconds_total", "counter", "Total user and system CPU time spent in seconds.",
              (field(kUserTime) + field(kSystemTime)) / ticks);
    lines.Add("process_resident_memory_bytes", "gauge", "Resident memory size in bytes.",
              field(kResidentPages) * static_cast<double>(sysconf(_SC_PAGESIZE)));
    lines.Add("process_virtual_memory_bytes", "gauge", "Virtual memory size in bytes.", field(kVirtualBytes));
    lines.Add("process_threads", "gauge", "Number of threads.", field(kThreads));
    lines.Add("process_start_time_seconds", "gauge", "Start time of the process since unix epoch in seconds.",
              started);
    return lines.Text();
}

} // namespace analytics::platform
