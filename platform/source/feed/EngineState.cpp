#include "feed/EngineState.h"

#include "feed/EngineFeed.h"

#include <nlohmann/json.hpp>
#include <openssl/evp.h>

#include <stdexcept>

namespace analytics::platform
{
namespace
{
using Json = nlohmann::ordered_json;

// What every reader of JSON holds exactly.
constexpr std::int64_t kMostSequence = std::int64_t{1} << 53;

std::string Sha256(const std::string& text)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    std::size_t length = 0;
    if (EVP_Q_digest(nullptr, "SHA256", nullptr, text.data(), text.size(), digest, &length) != 1)
        throw std::runtime_error("no SHA-256 could be computed");
    std::string hexadecimal;
    for (std::size_t at = 0; at < length; ++at)
        for (const int digit : {digest[at] >> 4, digest[at] & 15})
            hexadecimal += "0123456789abcdef"[digit];
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

} // namespace analytics::platform
