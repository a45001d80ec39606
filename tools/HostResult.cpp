#include "HostResult.h"

#include "Behaviors.h"
#include "Json.h"
#include "Meaning.h"
#include "Output.h"
#include "Scene.h"
#include "Text.h"

namespace client
{
namespace
{

constexpr const char* kElements[] = {"profile", "behavior", "scene", "run"};
constexpr const char* kActions[] = {"create", "set", "delete", "run"};
constexpr const char* kStates[] = {"same",        "differs", "changed", "failed",
                                   "unreachable", "skipped", "restored"};

template <std::size_t N, class Enumeration>
const char* WordOf(const char* const (&words)[N], Enumeration value)
{
    return words[static_cast<std::size_t>(value)];
}

std::string Called(const Step& step)
{
    return step.element == Step::Element::Behavior ? BehaviorCalled(step.id) : step.id;
}

Json ChangesOf(const std::vector<Step>& steps)
{
    Json changes = Json::array();
    for (const Step& step : steps)
        changes.push_back({{"element", WordOf(kElements, step.element)},
                           {"id", Called(step)},
                           {"action", WordOf(kActions, step.action)},
                           {"before", Readable(step.before)},
                           {"after", Readable(step.after)}});
    return changes;
}

// How the documents of a step differ, a line each.
std::string Differing(const Step& step)
{
    if (step.action != Step::Action::Set)
        return "";
    std::string lines;
    const std::string id = step.element == Step::Element::Scene ? kSceneElement : step.id;
    for (const Change& change : Differences(id, step.before, step.after))
        lines += "    " + change.node + ": " + change.sent + " -> " + change.stored + '\n';
    return lines;
}

std::string Line(const Step& step)
{
    std::string line = WordOf(kActions, step.action);
    if (step.element != Step::Element::Run)
        line += std::string(" ") + WordOf(kElements, step.element);
    return "  " + line + " " + Called(step) + '\n' + Differing(step);
}

} // namespace

std::string ChangesJson(const std::vector<Step>& steps) { return JsonLine(ChangesOf(steps)); }

std::string JsonLine(const HostResult& result)
{
    Json line = {{"host", result.host},
                 {"state", WordOf(kStates, result.state)},
                 {"changes", ChangesOf(result.steps)}};
    if (!result.error.empty())
        line["error"] = result.error;
    return JsonLine(line) + '\n';
}

std::string Lines(const HostResult& result)
{
    std::string lines = result.host + " " + WordOf(kStates, result.state) +
                        (result.error.empty() ? "" : ": " + result.error) + '\n';
    for (const Step& step : result.steps)
        lines += Line(step);
    return Printable(lines, true);
}

void Tally::Count(const HostResult& result)
{
    ++m_counts[result.state];
    if (result.Bad())
        ++m_bad;
}

std::size_t Tally::Of(HostState state) const
{
    const auto found = m_counts.find(state);
    return found == m_counts.end() ? 0 : found->second;
}

std::string Tally::Sentence() const
{
    std::size_t all = 0;
    std::string words;
    for (const auto& [state, count] : m_counts)
    {
        all += count;
        words += (words.empty() ? "" : ", ") + std::to_string(count) + " " + WordOf(kStates, state);
    }
    return std::to_string(all) + (all == 1 ? " host: " : " hosts: ") + words + ".";
}

} // namespace client
