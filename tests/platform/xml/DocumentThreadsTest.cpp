#include <analytics/ProfileDoc.h>

#include "Nodes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace analytics::test
{
namespace
{
constexpr int kThreads = 8;
constexpr int kRounds = 200;

// One conversion's worth of work on documents of its own; true if all came out right.
bool Work(int seed)
{
    const std::string number = std::to_string(seed);
    ProfileDoc doc;
    if (!doc.ParseString("<tt:R xmlns:tt='urn:t'><tt:RuleEngineConfiguration/></tt:R>"))
        return false;
    const Node container = Select(doc, "//tt:RuleEngineConfiguration");
    const Node rule(container->AddNewChild("Rule", ""));
    rule->SetProperty("Type", "r" + number);
    const Node parameters(rule->AddNewChild("Parameters", ""));
    const Node item(parameters->AddNewChild("SimpleItem", ""));
    item->SetProperty("Name", std::string("N"));
    item->SetProperty("Value", seed);
    ProfileDoc again;
    if (!again.ParseString(doc.DumpToString()))
        return false;
    const Node found(again.SelectRule("r" + number));
    return found != nullptr && again.GetSimpleItemValue("N", -1, found.get(), true) == seed &&
           Texts(again, ".//tt:Rule/tt:Parameters/tt:SimpleItem/@Value") == number &&
           Texts(again, "//tt:SimpleItem[@Value='" + number + "']/@Value") == number &&
           !Document().ParseString("<a>") && Texts(again, "//" + number + "[").empty();
}

TEST(DocumentThreads, WorkOnDocumentsOfTheirOwn)
{
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back(
            [&right, t]
            {
                for (int i = 0; i < kRounds; ++i)
                    right += Work(t * kRounds + i) ? 1 : 0;
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, kThreads * kRounds);
}
} // namespace
} // namespace analytics::test
