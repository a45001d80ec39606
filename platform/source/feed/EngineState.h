#pragma once

#include <analytics/ProfileSummary.h>

#include <cstdint>
#include <optional>
#include <string>

namespace analytics::platform
{

// What the analytics engine is told.
struct EngineState
{
    std::int64_t sequence = 0; // larger with each state that differs
    int profile = 0;           // that is active; 0: none
    std::string facts;         // what EngineFacts() gave
    std::string document;      // the active profile, merged; empty if there is none or it holds nothing
};

// One object of JSON: which profile is active, what is switched on, and what its document looks like. Two
// states with the same facts are the same to an engine.
std::string EngineFacts(const std::optional<ProfileSummary>& active, bool analytics, bool motionDetection,
                        const std::string& document);
// The facts behind the sequence: the text of state.json.
std::string EngineStateText(const EngineState& state);
// The sequence in such a text; 0 if there is none that could be continued.
std::int64_t SequenceIn(const std::string& stateText);

} // namespace analytics::platform
