// What is counted on any thread is in the next text, in the format of Prometheus.

#include "metrics/Metrics.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

namespace analytics::platform
{
namespace
{

using testing::HasSubstr;
using testing::Not;

TEST(Metrics, ShowACounterThatNobodyHasUsed)
{
    static const Counter unused("test_unused_total", "Never counted.");
    EXPECT_THAT(MetricsText(), HasSubstr("# HELP test_unused_total Never counted.\n"
                                         "# TYPE test_unused_total counter\n"
                                         "test_unused_total 0\n"));
}

TEST(Metrics, AddUpWhatThreadsCountedThatRunAndThatHaveEnded)
{
    static Counter counter("test_threads_total", "Counted by threads.");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            []
            {
                for (int j = 0; j < 1000; ++j)
                    counter.Add();
            });
    counter.Add(5);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(counter.Value(), 4005U);
    EXPECT_THAT(MetricsText(), HasSubstr("\ntest_threads_total 4005\n"));
}

TEST(Metrics, NameAFamilyOnceAndEachOfItsRows)
{
    static Counter one("test_rows_total", "Rows.", "kind=\"one\"");
    static Counter two("test_rows_total", "Rows.", "kind=\"two\"");
    two.Add(2);
    EXPECT_THAT(MetricsText(), HasSubstr("# TYPE test_rows_total counter\n"
                                         "test_rows_total{kind=\"one\"} 0\n"
                                         "test_rows_total{kind=\"two\"} 2\n"
                                         "# "));
}

TEST(Metrics, CountEachTimeInItsClassAndAllAboveIt)
{
    static Histogram times("test_seconds", "Times.", "operation=\"x\"");
    times.Observe(0.001);
    times.Observe(0.002);
    times.Observe(20);
    const std::string text = MetricsText();
    EXPECT_THAT(text, HasSubstr("test_seconds_bucket{operation=\"x\",le=\"0.001\"} 1\n"
                                "test_seconds_bucket{operation=\"x\",le=\"0.0025\"} 2\n"));
    EXPECT_THAT(text, HasSubstr("test_seconds_bucket{operation=\"x\",le=\"10\"} 2\n"
                                "test_seconds_bucket{operation=\"x\",le=\"+Inf\"} 3\n"
                                "test_seconds_sum{operation=\"x\"} 20.003\n"
                                "test_seconds_count{operation=\"x\"} 3\n"));
}

TEST(Metrics, ShowAGaugeAsItStands)
{
    static Gauge gauge("test_gauge", "Up and down.");
    gauge.Set(3);
    gauge.Add(-4);
    EXPECT_THAT(MetricsText(), HasSubstr("# TYPE test_gauge gauge\ntest_gauge -1\n"));
}

TEST(Metrics, TellOfTheProcess)
{
    const std::string text = MetricsText();
    for (const char* const name :
         {"process_cpu_seconds_total", "process_resident_memory_bytes", "process_virtual_memory_bytes",
          "process_start_time_seconds", "process_open_fds", "process_max_fds", "process_threads"})
    {
        EXPECT_THAT(text, HasSubstr(std::string("\n") + name + ' '));
    }
    // It may have taken no time yet.
    for (const char* const name : {"process_resident_memory_bytes", "process_open_fds", "process_threads"})
        EXPECT_THAT(text, Not(HasSubstr(std::string("\n") + name + " 0\n")));
}

} // namespace
} // namespace analytics::platform
