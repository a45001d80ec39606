#include "feed/EngineFeed.h"

#include <analytics/Settings.h>

#include "files/File.h"
#include "metrics/Metrics.h"
#include "settings/Configuration.h"

#include <fcntl.h>
#include <nettle/base16.h>
#include <nettle/sha2.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>

namespace analytics::platform
{

namespace
{
using Json = nlohmann::ordered_json;

// What every reader of JSON holds exactly.
constexpr std::int64_t kMostSequence = std::int64_t{1} << 53;

std::string Sha256(const std::string& text)
{
    sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest = {};
    sha256_digest(&context, digest.size(), digest.data());
    std::string hexadecimal(BASE16_ENCODE_LENGTH(digest.size()), '\0');
    base16_encode_update(hexadecimal.data(), digest.size(), digest.data());
    return hexadecimal;
}
} // namespace

std::string EngineFacts(const std::optional<ProfileSummary>& active, bool analytics, bool motionDetection,
                        const std::string& document)
{
    Json facts;
    facts["profile"] = nullptr;
    if (active)
        facts["profile"] = Json{{"id", active->id}, {"name", active->name}, {"preset", active->preset}};
    facts["analytics"] = analytics;
    facts["motionDetection"] = motionDetection;
    facts["document"] = nullptr;
    if (!document.empty())
        facts["document"] =
            Json{{"file", EngineFeed::kDocument}, {"bytes", document.size()}, {"sha256", Sha256(document)}};
    return facts.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string EngineStateText(const EngineState& state)
{
    return "{\"sequence\":" + std::to_string(state.sequence) + "," + state.facts.substr(1) + "\n";
}

std::int64_t SequenceIn(const std::string& stateText)
{
    const Json state = Json::parse(stateText, nullptr, false);
    if (!state.is_object() || !state.contains("sequence") || !state["sequence"].is_number_unsigned())
        return 0;
    const auto sequence = state["sequence"].get<std::uint64_t>();
    return sequence < kMostSequence ? static_cast<std::int64_t>(sequence) : 0;
}

namespace
{
namespace fs = std::filesystem;

constexpr std::chrono::seconds kRetry{1};
// The engine runs as another user of the service's group, whatever the umask of the service is.
constexpr mode_t kFileMode = 0640;
constexpr mode_t kFolderMode = 0750;

// Without the call that failed, which says nothing to a person.
std::string ReasonOf(const std::exception& failure)
{
    const auto* const error = dynamic_cast<const std::system_error*>(&failure);
    return error != nullptr ? error->code().message() : failure.what();
}

[[noreturn]] void Throw(int error) { throw std::system_error(error, std::generic_category()); }

std::string TemporaryOf(const std::string& folder, const char* name) { return folder + "/." + name + ".tmp"; }

void WriteAll(int handle, const std::string& text)
{
    for (std::size_t at = 0; at < text.size();)
    {
        const ssize_t written = write(handle, text.data() + at, text.size() - at);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            Throw(errno);
        at += static_cast<std::size_t>(written);
    }
}

// A regular file of this text that an engine may read.
bool Holds(const std::string& path, const std::string& text)
{
    std::error_code error;
    const fs::file_status status = fs::symlink_status(path, error);
    if (text.empty())
        return status.type() == fs::file_type::not_found;
    if (status.type() != fs::file_type::regular || status.permissions() != fs::perms(kFileMode))
        return false;
    const FileText found = ReadFile(path);
    return found.failure.empty() && found.text == text;
}
} // namespace

EngineFeed::EngineFeed(std::string folder)
    : m_folder(std::move(folder)),
      m_sequence(SequenceIn(ReadFile(m_folder + "/" + kState).text)),
      m_files{File{kDocument}, File{kState}},
      m_ticker(kRetry, [this] { Check(); })
{
}

void EngineFeed::Show(EngineState state)
{
    const MutexLock hold(m_lock);
    if (m_state && state.sequence <= m_state->sequence)
        return;
    for (File& file : m_files)
    {
        std::string text = file.name == kDocument ? state.document : EngineStateText(state);
        if (!m_state)
            TakeOver(file, text);
        else if (text != file.text)
            file.left.reset();
        file.text = std::move(text);
    }
    m_sequence = state.sequence;
    m_state = std::move(state);
    PutRight();
    m_profile = m_state->profile;
}

// What an earlier run has left stays, if it is right.
void EngineFeed::TakeOver(File& file, const std::string& text) const
{
    std::error_code ignored;
    fs::remove_all(TemporaryOf(m_folder, file.name), ignored);
    if (Holds(PathOf(file), text))
        file.left = StampOf(PathOf(file));
}

void EngineFeed::Check()
{
    const MutexLock hold(m_lock);
    if (m_state)
        PutRight();
}

void EngineFeed::PutRight()
{
    try
    {
        for (File& file : m_files)
            if (!IsRight(file))
                Replace(file);
        m_outage.End("The files for the engine in " + m_folder + " are right again.");
    }
    catch (const std::exception& error)
    {
        gEngineFeedErrors.Add();
        m_outage.Begin(
            "The files for the engine in " + m_folder + " can't be written: " + ReasonOf(error) +
            "; the engine reads what was there before. Make room there, or make the folder writable "
            "for the service.");
    }
}

bool EngineFeed::IsRight(const File& file) const { return file.left && file.left == StampOf(PathOf(file)); }

void EngineFeed::Replace(File& file) const
{
    const std::string path = PathOf(file);
    std::error_code error;
    if (file.text.empty() || fs::is_directory(fs::symlink_status(path, error)))
        fs::remove_all(path);
    if (!file.text.empty())
    {
        const std::string temporary = TemporaryOf(m_folder, file.name);
        WriteTemporary(file, temporary);
        fs::rename(temporary, path);
    }
    file.left = StampOf(path);
}

void EngineFeed::WriteTemporary(const File& file, const std::string& path) const
{
    const auto make = [&]
    { return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, kFileMode); };
    FileHandle handle(make());
    if (!handle && errno == ENOENT)
    {
        MakeFolder();
        handle = FileHandle(make());
    }
    if (!handle)
        Throw(errno);
    try
    {
        if (fchmod(handle.Get(), kFileMode) != 0)
            Throw(errno);
        WriteAll(handle.Get(), file.text);
    }
    catch (const std::system_error&)
    {
        unlink(path.c_str());
        throw;
    }
}

void EngineFeed::MakeFolder() const
{
    const fs::path folder(m_folder);
    if (fs::create_directories(folder))
        fs::permissions(folder, fs::perms(kFolderMode));
}

std::string ConfiguredEngineFolder()
{
    const std::string& option = CurrentConfiguration().engineFolder;
    if (!option.empty())
        return option;
    const std::string setting = Settings::GetValue("/settings/engine");
    return setting.empty() ? "" : FileBesideSettings(setting);
}

} // namespace analytics::platform
