#pragma once

#include <analytics/ProfileManager.h>

#include "files/File.h"
#include "files/StandardError.h"
#include "threads/Mutex.h"
#include "threads/Ticker.h"

#include <array>
#include <atomic>
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

// Two files in a folder that tell the analytics engine what is to run: kDocument, the engine document of the
// active profile, and kState. Each is replaced as a whole, the document first. What can't be written is told
// on standard error as an outage is, counted, and tried again every second; so is what somebody else removed
// or changed. Any thread.
class EngineFeed
{
  public:
    static constexpr const char* kDocument = "active.xml";
    static constexpr const char* kState = "state.json";

    // The folder is made when something is written, if it is missing.
    explicit EngineFeed(std::string folder);

    // Returns when the files show this state or a later one, or can't be written.
    void Show(EngineState state);
    // Of the last state shown, and before the first one that which the folder holds from an earlier run.
    std::int64_t LastSequence() const { return m_sequence; }
    // The profile that the files show as active until the next call of Show() returns; 0: none.
    int Profile() const { return m_profile; }

  private:
    struct File
    {
        const char* name;
        std::string text = {};              // empty: no file
        std::optional<FileStamp> left = {}; // once it is known to have this text
    };

    std::string PathOf(const File& file) const { return m_folder + "/" + file.name; }
    void TakeOver(File& file, const std::string& text) const;
    void PutRight() ANALYTICS_REQUIRES(m_lock);
    bool IsRight(const File& file) const;
    void Replace(File& file) const;
    void WriteTemporary(const File& file, const std::string& path) const;
    void MakeFolder() const;
    void Check();

    const std::string m_folder;
    std::atomic<std::int64_t> m_sequence;
    std::atomic<int> m_profile = 0;
    Mutex m_lock;
    std::optional<EngineState> m_state ANALYTICS_GUARDED_BY(m_lock);
    std::array<File, 2> m_files ANALYTICS_GUARDED_BY(m_lock); // in the order of writing
    Outage m_outage ANALYTICS_GUARDED_BY(m_lock);
    Ticker m_ticker;
};

// The folder that the configuration asks for, or else the settings; empty if neither does.
std::string ConfiguredEngineFolder();

} // namespace analytics::platform
