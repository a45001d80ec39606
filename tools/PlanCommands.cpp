#include "Failure.h"
#include "Guard.h"
#include "PlanFile.h"
#include "Progress.h"
#include "Rollout.h"
#include "Session.h"
#include "Transfer.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>

namespace client
{
namespace
{

struct PlanArguments
{
    std::string source; // a folder, or a saved plan
    std::string hosts;
    std::string out;
    std::string batch;
    std::string maxFail;
    int seconds = 30;
    bool exitCode = false;
    PlanOptions options;
    RolloutOptions rollout;
};

// What to do on which hosts. Shared with work that may be abandoned.
struct Job
{
    Goal goal;
    std::vector<Target> targets;
    std::optional<SavedPlan> saved;
    std::vector<Trace> traces;
};
using SharedJob = std::shared_ptr<Job>;

void LoadPlan(Session& session, const PlanArguments& arguments, Job& job)
{
    if (!arguments.hosts.empty() || !session.access.url.empty() || !session.camera.empty() ||
        !session.frameText.empty() || arguments.options.prune || arguments.options.run)
        throw Failure(Exit::Usage,
                      arguments.source +
                          " is a saved plan, which holds its hosts, their frames, --prune and --run. "
                          "Leave out --hosts, --url, --camera, --frame, --prune and --run, or name "
                          "a folder");
    job.saved = ReadPlan(arguments.source, {session.Ready(), session.Frame(), {}});
    job.goal = job.saved->goal;
    job.targets = job.saved->targets;
}

void LoadFolder(Session& session, const PlanArguments& arguments, Job& job)
{
    std::vector<Camera> cameras;
    if (!arguments.hosts.empty())
    {
        session.RefuseCamera();
        cameras = ReadHosts(arguments.hosts);
    }
    job.goal.wanted = ReadFolder(arguments.source);
    job.goal.options = arguments.options;
    CheckAll(job.goal.wanted, session.Checks());
    const Target otherwise{session.Ready(), session.Frame(), {}};
    job.targets = arguments.hosts.empty() ? std::vector<Target>{otherwise} : TargetsOf(cameras, otherwise);
}

SharedJob Load(Session& session, const PlanArguments& arguments, bool plans)
{
    const auto job = std::make_shared<Job>();
    std::error_code error;
    if (plans && std::filesystem::is_regular_file(arguments.source, error))
        LoadPlan(session, arguments, *job);
    else
        LoadFolder(session, arguments, *job);
    job->goal.time = std::chrono::seconds(arguments.seconds);
    job->goal.strict = session.strict;
    job->traces = std::vector<Trace>(job->targets.size());
    return job;
}

HostResult Skipped(const Job& job, std::size_t host) { return {.host = job.targets[host].access.url}; }

// Tells each host as it comes, and the sum at the end.
class Telling
{
  public:
    // `single`: the host of --url, whose error is that of the command.
    Telling(const Session& session, std::size_t hosts, bool single)
        : m_json(session.json), m_single(single), m_progress(hosts)
    {
    }

    void Host(const HostResult& result)
    {
        m_tally.Count(result);
        if (result.Bad())
            m_last = result;
        m_progress.Clear();
        Tell({result.host, ""}, result.warnings, m_json);
        const bool told = !m_json && m_single && result.Bad();
        const std::string text = told ? "" : m_json ? JsonLine(result) : Lines(result);
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
        m_progress.Step();
    }

    const Tally& Sum() const { return m_tally; }

    // Throws Failure if not all hosts are done, and why others were left over.
    void Conclude(const std::string& ended) const
    {
        m_progress.Clear();
        if (m_single && m_tally.Bad() > 0)
            throw Failure(m_last.code, m_last.error);
        if (m_tally.Bad() > 0 || !ended.empty())
            throw Failure(Exit::Refused, "Not all could be done. " + (ended.empty() ? "" : ended + " ") +
                                             m_tally.Sentence());
        if (!m_json && !m_single)
            std::printf("%s\n", m_tally.Sentence().c_str());
    }

  private:
    bool m_json;
    bool m_single;
    Progress m_progress;
    Tally m_tally;
    HostResult m_last; // of those with an error
};

void Plan(Session& session, PlanArguments arguments)
{
    const SharedJob job = Load(session, arguments, false);
    std::optional<PlanWriter> file;
    if (!arguments.out.empty())
        file.emplace(arguments.out, job->goal, job->targets);
    Telling telling(session, job->targets.size(), arguments.hosts.empty());
    Rollout rollout(job->targets.size(), arguments.rollout);
    session.leaves = !rollout.Run([job](std::size_t host) { return PlanHost(job->targets[host], job->goal); },
                                  [job](std::size_t host) { return Skipped(*job, host); },
                                  [&](const HostResult& result)
                                  {
                                      telling.Host(result);
                                      if (file)
                                          file->Add(result);
                                  });
    if (file && rollout.Ended().empty())
        file->Finish();
    telling.Conclude(rollout.Ended());
    if (arguments.exitCode && telling.Sum().Of(HostState::Differs) > 0)
        session.exit = Exit::Differs;
}

// Whether the host is as it was when the plan was saved, if it was; if not, why, in the result's error.
bool Permitted(const Job& job, HostResult& plan) { return !job.saved || job.saved->Permits(plan); }

// Plans for all hosts and asks for confirmation, if one can be needed. Returns false if it was interrupted.
bool Guarded(Session& session, const PlanArguments& arguments, const SharedJob& job)
{
    if (session.force || !Guard::Matters(job->targets.size(), job->goal.options))
        return true;
    Guard guard;
    Progress progress(job->targets.size());
    RolloutOptions all;
    all.jobs = arguments.rollout.jobs;
    Rollout rollout(job->targets.size(), all);
    session.leaves = !rollout.Run([job](std::size_t host) { return PlanHost(job->targets[host], job->goal); },
                                  [job](std::size_t host) { return Skipped(*job, host); },
                                  [&](HostResult result)
                                  {
                                      if (result.state == HostState::Same || Permitted(*job, result))
                                          guard.Count(result);
                                      progress.Step();
                                  });
    progress.Clear();
    if (!rollout.Ended().empty())
        return false;
    if (const std::string reason = guard.Reason(); !reason.empty())
        Agree(reason);
    return true;
}

void Apply(Session& session, PlanArguments arguments)
{
    for (const auto& [option, text, share] :
         {std::tuple("--batch", &arguments.batch, &arguments.rollout.batch),
          {"--max-fail", &arguments.maxFail, &arguments.rollout.maxFail}})
        if (!text->empty())
            *share = ParseShare(option, *text);
    const SharedJob job = Load(session, arguments, true);
    const bool guarded = Guarded(session, arguments, job);
    Telling telling(session, job->targets.size(), arguments.hosts.empty() && !job->saved);
    Rollout rollout(job->targets.size(), arguments.rollout);
    if (!guarded)
        rollout.End("It was interrupted.");
    const Fleet fleet = rollout.Hosts();
    const auto work = [job, fleet](std::size_t host)
    {
        const auto permitted = [&job, &fleet](HostResult& plan)
        { return !fleet.Interrupted() && Permitted(*job, plan); };
        return ApplyHost(job->targets[host], job->goal, permitted, job->traces[host]);
    };
    const bool ended = rollout.Run(
        work, [job](std::size_t host) { return Abandoned(job->targets[host], job->traces[host]); },
        [&telling](const HostResult& result) { telling.Host(result); });
    session.leaves = session.leaves || !ended;
    telling.Conclude(rollout.Ended());
}

// What plan and apply share.
CLI::App* Add(CLI::App& app, Session& session, const std::string& name, const std::string& description,
              const std::string& examples, void (*action)(Session&, PlanArguments),
              const std::shared_ptr<PlanArguments>& arguments)
{
    CLI::App* const command = AddCommand(app, session, name, description, examples,
                                         [&session, action, arguments] { action(session, *arguments); });
    command
        ->add_option("--hosts", arguments->hosts,
                     "File with a host in each line, instead of --url or --camera")
        ->type_name("FILE");
    command->add_flag("--prune", arguments->options.prune,
                      "Delete the behaviors that the folder doesn't have");
    command->add_flag("--run", arguments->options.run, "Run the profile");
    command->add_option("--jobs", arguments->rollout.jobs, "How many hosts at a time")
        ->type_name("NUMBER")
        ->check(CLI::Range(1, 256))
        ->capture_default_str();
    command->add_option("--host-timeout", arguments->seconds, "Time for all that is done on one host")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    AddStrict(*command, session);
    return command;
}

void AddPlan(CLI::App& app, Session& session)
{
    const auto arguments = std::make_shared<PlanArguments>();
    CLI::App* const command =
        Add(app, session, "plan", "Tell what 'apply' would write, and write nothing",
            "  varlo-analytics plan backup/car-park\n"
            "  varlo-analytics plan backup/car-park --hosts cameras.txt --prune --out car-park.plan\n"
            "  varlo-analytics plan backup/car-park --hosts cameras.txt --json --exit-code",
            Plan, arguments);
    command->add_option("DIR", arguments->source, "A folder that 'export' has written")->required();
    command->add_flag("--exit-code", arguments->exitCode, "End with 5 if a host differs");
    command->add_option("--out", arguments->out, "Save the plan, for 'apply'")->type_name("PLAN");
}

void AddApply(CLI::App& app, Session& session)
{
    const auto arguments = std::make_shared<PlanArguments>();
    CLI::App* const command =
        Add(app, session, "apply",
            "Write what differs between a folder and the profile of its name, on many hosts",
            "  varlo-analytics apply backup/car-park\n"
            "  varlo-analytics apply backup/car-park --hosts cameras.txt --run --canary 1 --batch 10%\n"
            "  varlo-analytics apply car-park.plan --max-fail 5 --json",
            Apply, arguments);
    command
        ->add_option("DIR", arguments->source,
                     "A folder that 'export' has written, or a plan that 'plan --out' has")
        ->type_name("DIR|PLAN")
        ->required();
    command
        ->add_option("--canary", arguments->rollout.canary, "Do so many hosts first, and stop if one fails")
        ->type_name("NUMBER")
        ->check(CLI::Range(0, 1000000));
    command
        ->add_option("--batch", arguments->batch,
                     "So many hosts, one batch after the other; one that fails is the last")
        ->type_name("NUMBER|PERCENT%");
    command
        ->add_option("--max-fail", arguments->maxFail, "Begin no other host once more than these have failed")
        ->type_name("NUMBER|PERCENT%");
    command->add_flag(
        "--force", session.force,
        "Don't ask before much is changed or something is deleted, and send a document although "
        "there is an error in it");
}

} // namespace

void AddPlanCommands(CLI::App& app, Session& session)
{
    AddPlan(app, session);
    AddApply(app, session);
}

} // namespace client
