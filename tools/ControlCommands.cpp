#include "Session.h"

#include <CLI/CLI.hpp>

namespace client
{
namespace
{

struct Order
{
    const char* name;
    const char* description;
    Command command;
    const char* done;
};
constexpr Order kAnalytics[] = {{"start", "Start the analytics", Command::Start, "The analytics run."},
                                {"stop", "Stop the analytics", Command::Stop, "The analytics are stopped."}};
constexpr Order kMotionDetection[] = {
    {"on", "Switch the motion detection on", Command::MotionDetectionOn, "The motion detection is on."},
    {"off", "Switch the motion detection off", Command::MotionDetectionOff, "The motion detection is off."}};

void Add(CLI::App& parent, Session& session, const std::string& path, const Order& order)
{
    const std::string words = path + " " + order.name;
    AddCommand(parent, session, order.name, order.description, "  varlo-analytics " + words,
               [&session, words, &order]
               {
                   session.Service().Control(order.command);
                   session.Out().Result({{"done", words}}, order.done);
               });
}

} // namespace

void AddControlCommands(CLI::App& app, Session& session)
{
    CLI::App* const group =
        app.add_subcommand("control", "Start and stop the analytics, and the motion detection");
    group->require_subcommand(1);
    group->footer("Examples:\n  varlo-analytics control stop\n  varlo-analytics control motion-detection on");
    for (const Order& order : kAnalytics)
        Add(*group, session, "control", order);
    CLI::App* const motion = group->add_subcommand(
        "motion-detection",
        "Switch the motion detection on or off; while it is on it may take a behavior's place");
    motion->require_subcommand(1);
    motion->footer("Examples:\n  varlo-analytics control motion-detection on");
    for (const Order& order : kMotionDetection)
        Add(*motion, session, "control motion-detection", order);
}

} // namespace client
