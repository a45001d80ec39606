#include "net/RequestMetrics.h"

#include "metrics/Metrics.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string>

namespace tarno::osa::requestmetrics
{
namespace
{

using analytics::platform::Counter;
using analytics::platform::Gauge;
using analytics::platform::Histogram;

constexpr std::array<std::string_view, 17> kOperations = {"AlgorithmControl",
                                                          "CreateProfile",
                                                          "DeleteProfile",
                                                          "DeleteProfileBehavior",
                                                          "ExecuteProfile",
                                                          "GetActiveProfile",
                                                          "GetBehaviorAvailability",
                                                          "GetBehaviorAvailability2",
                                                          "GetDefaultConfiguration",
                                                          "GetDefaultScene",
                                                          "GetProfileBehavior",
                                                          "GetProfileList",
                                                          "GetProfileScene",
                                                          "SetProfileBehavior",
                                                          "SetProfileScene",
                                                          "StopProfile",
                                                          "other"};
constexpr std::size_t kOther = kOperations.size() - 1;
constexpr std::size_t kFaultWithin = 2000; // bytes; a fault's code stands before its sentence

// A counter of the family for each value of its label.
template <class... Values>
std::array<Counter, sizeof...(Values)> ByLabel(const char* family, const char* help, const std::string& label,
                                               Values... values)
{
    return {Counter(family, help, label + "=\"" + values + '"')...};
}

// A row for each operation.
struct Operation
{
    explicit Operation(const std::string& label)
        : outcomes(ByLabel("varlo_requests_total", "Requests that were served.", label + ",outcome", "ok",
                           "client_fault", "server_fault", "dropped")),
          seconds("varlo_request_seconds", "From a whole request to its answer.", label)
    {
    }

    std::array<Counter, 4> outcomes;
    Histogram seconds;
};

std::deque<Operation> AllOperations()
{
    std::deque<Operation> all;
    for (const std::string_view name : kOperations)
        all.emplace_back("operation=\"" + std::string(name) + '"');
    return all;
}
std::deque<Operation> gOperations = AllOperations();

// Walks over the tags of a text without looking at what they mean.
class Tags
{
  public:
    explicit Tags(std::string_view text) : m_rest(text) {}

    // The next tag of an element, without its brackets; empty at the end.
    std::string_view Next()
    {
        for (std::size_t at = m_rest.find('<'); at != std::string_view::npos; at = m_rest.find('<'))
        {
            m_rest.remove_prefix(at + 1);
            if (!Skip("!--", "-->") && !Skip("![CDATA[", "]]>") && !Skip("?", "?>"))
                return Tag();
        }
        return {};
    }

  private:
    bool Skip(std::string_view begin, std::string_view end)
    {
        if (!m_rest.starts_with(begin))
            return false;
        const std::size_t at = m_rest.find(end, begin.size());
        m_rest.remove_prefix(std::min(at, m_rest.size()));
        return true;
    }
    std::string_view Tag()
    {
        char quote = 0;
        std::size_t size = 0;
        for (; size < m_rest.size() && (quote != 0 || m_rest[size] != '>'); ++size)
        {
            const char next = m_rest[size];
            if (quote == 0 && (next == '"' || next == '\''))
                quote = next;
            else if (next == quote)
                quote = 0;
        }
        return m_rest.substr(0, size);
    }

    std::string_view m_rest;
};

std::string_view LocalName(std::string_view tag)
{
    const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/"));
    return name.substr(name.find(':') + 1); // npos + 1 is 0
}

Gauge gConnections("varlo_connections", "Connections that are open.");
auto gEnded = ByLabel("varlo_connections_total", "Connections that have ended.", "outcome", "served",
                      "refused", "timed_out", "dropped");
auto gHandshakes =
    ByLabel("varlo_tls_handshakes_total", "TLS handshakes.", "kind", "full", "resumed", "failed");
auto gRefused = ByLabel("varlo_access_refused_total", "Requests that were refused for who sent them.",
                        "reason", "password", "throttled", "certificate");

} // namespace

std::size_t OperationOf(std::string_view request)
{
    Tags tags(request.substr(std::min(request.find("\r\n\r\n"), request.size())));
    int depth = 0;
    bool body = false;
    for (std::string_view tag = tags.Next(); !tag.empty(); tag = tags.Next())
    {
        if (tag.front() == '/')
        {
            --depth;
            continue;
        }
        if (depth == 1)
            body = LocalName(tag) == "Body";
        if (depth == 2 && body)
            return static_cast<std::size_t>(
                std::find(kOperations.begin(), kOperations.end() - 1, LocalName(tag)) - kOperations.begin());
        if (tag.back() != '/')
            ++depth;
    }
    return kOther;
}

Outcome OutcomeOf(std::string_view answer)
{
    const std::string_view status = answer.substr(0, answer.find("\r\n"));
    if (status.find(" 200 ") != std::string_view::npos)
        return Outcome::Ok;
    const std::string_view start = answer.substr(0, kFaultWithin);
    const bool client =
        start.find(":Client<") != std::string_view::npos || start.find(":Sender<") != std::string_view::npos;
    return answer.empty() ? Outcome::Dropped : client ? Outcome::ClientFault : Outcome::ServerFault;
}

void Count(std::size_t operation, Outcome outcome, double seconds)
{
    gOperations[operation].outcomes[static_cast<std::size_t>(outcome)].Add();
    gOperations[operation].seconds.Observe(seconds);
}

void CountBegun() { gConnections.Add(1); }

void CountEnded(ConnectionOutcome outcome)
{
    gConnections.Add(-1);
    gEnded[static_cast<std::size_t>(outcome)].Add();
}

void Count(Handshake handshake) { gHandshakes[static_cast<std::size_t>(handshake)].Add(); }

void Count(Refused why) { gRefused[static_cast<std::size_t>(why)].Add(); }

} // namespace tarno::osa::requestmetrics
