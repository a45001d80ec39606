#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

// What the service counts, in the terms of Prometheus. Counters are objects at namespace scope and are shown
// from the start, at 0. Counting takes no lock and no memory: each thread counts for itself, and a scrape
// adds up. Any thread.
namespace analytics::platform
{

// Only grows.
class Counter
{
  public:
    // `labels` as they are shown between the braces, such as reason="role"; each family has the same help.
    Counter(const std::string& family, const std::string& help, const std::string& labels = "");

    void Add(std::uint64_t count = 1);
    std::uint64_t Value() const;

  private:
    std::size_t m_slot;
};

// How long something takes, by classes from 1 ms to 10 s.
class Histogram
{
  public:
    Histogram(const std::string& family, const std::string& help, const std::string& labels = "");

    void Observe(double seconds);

  private:
    std::size_t m_slot;
};

// Goes up and down.
class Gauge
{
  public:
    Gauge(const std::string& family, const std::string& help, const std::string& labels = "");

    void Set(double value) { m_value = value; }
    void Add(double difference) { m_value += difference; }
    double Value() const { return m_value; }

  private:
    std::atomic<double> m_value = 0;
};

// Counted in several places of the platform.
extern Counter gStoreChanges;     // committed calls that change the store
extern Counter gStoreCommits;     // transactions
extern Counter gStoreErrors;      // calls that failed for the store's sake
extern Gauge gProfiles;           // how many there are
extern Gauge gActiveProfile;      // its number, or -1
extern Counter gAuditErrors;      // lines that couldn't be written
extern Counter gEngineFeedErrors; // files that couldn't be written
extern Counter gRefusedByRole;

// All of them and the system's figures of the process, in Prometheus' text format 0.0.4.
std::string MetricsText();

} // namespace analytics::platform
