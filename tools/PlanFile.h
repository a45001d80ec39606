#pragma once

#include "Documents.h"
#include "HostWork.h"

#include <map>
#include <string>
#include <vector>

namespace client
{

// A plan as it is written, to be applied later. Its lines are JSON objects: the first holds the goal and
// the hosts, the last marks a complete file, and those between are the plans of the hosts.
class PlanWriter
{
  public:
    // Throws Failure if the file can't be written.
    PlanWriter(const std::string& file, const Goal& goal, const std::vector<Target>& targets);

    void Add(const HostResult& result);
    // Puts the file into its place. Throws Failure.
    void Finish();

  private:
    std::string m_name;
    NewFile m_file;
    std::size_t m_hosts = 0;
};

struct SavedPlan
{
    Goal goal;
    std::vector<Target> targets;
    // What was to be written to a host, in short; none of a host that failed.
    std::map<std::string, std::string> digests;

    // Whether this is what was planned for the host; if not, why, in the result's error.
    bool Permits(HostResult& plan) const;
};

// What the plan doesn't say of a host is as in `otherwise`. Throws Failure (document) for a file that is no
// plan or not a whole one.
SavedPlan ReadPlan(const std::string& file, const Target& otherwise);

} // namespace client
