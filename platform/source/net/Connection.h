#pragma once

#include "net/Authenticator.h"
#include "net/Budget.h"
#include "net/LeaderFollowers.h"
#include "net/RequestMetrics.h"
#include "net/RequestReader.h"
#include "net/Stream.h"

#include "access/TlsSource.h"
#include "request/Request.h"

#include <boost/asio/ip/address.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarno::osa
{

class ITcpSocketAccept;

// Who gets to the service, and how. What is null asks nothing of its clients.
struct Access
{
    std::unique_ptr<TlsSource> tls;
    std::unique_ptr<Authenticator> passwords;
    bool roles = false; // what the settings say of roles counts
};

// What the connections of a server have in common. Outlives them.
struct Served
{
    ITcpSocketAccept& acceptor;
    const Limits limits;
    Access access;
    bool counted = true;  // in the metrics
    bool postOnly = true; // HEAD and OPTIONS are refused
    Budget memory;
    std::atomic<bool> ending = false; // nobody is waited for any longer than an answer needs
    std::function<void()> ended;      // a connection is closed
    LeaderFollowers pool;             // goes first
};

// One accepted connection: agrees on TLS, reads a whole request, authenticates its sender, has it served,
// sends the answer, closes. Held to a deadline wherever it waits for its peer.
class Connection final : public EventHandler
{
  public:
    // `socket` doesn't block; `peer` is unspecified if it isn't an IP address.
    Connection(analytics::platform::FileHandle socket, const boost::asio::ip::address& peer, Served& server);
    ~Connection() override;

    Wish Continue(Cause cause) override;
    int Descriptor() const override { return m_stream->Descriptor(); }

  private:
    enum class Stage
    {
        Opening,
        Reading,
        Authenticating,
        Serving,
        Sending,
        Lingering
    };
    using Outcome = requestmetrics::ConnectionOutcome;

    void Within(std::chrono::milliseconds time) { m_deadline = Clock::now() + time; }
    Wish OnDeadline();
    Wish OnEnding();
    Wish Go();
    Wish Await(const StreamResult& result);
    Wish Open();
    void CountHandshake(const StreamResult& result) const;
    void NoteRefused(requestmetrics::Refused why, const std::string& name = "") const;
    Wish ReadRequest();
    StreamResult ReadSome(std::span<char> room);
    Wish AwaitRoom();
    bool RoomFor(std::size_t bytes);
    Wish Judge(RequestReader::Outcome outcome);
    Wish Authenticate();
    Wish OnVerdict(Authenticator::Verdict verdict);
    Wish Refuse(Refusal reason);
    Wish Serve();
    std::string Answer(std::string& identity);
    analytics::platform::Caller CallerNamed(const std::string& name) const;
    Wish Send(std::string answer);
    Wish SendMore();
    Wish End();
    Wish Linger();
    void CountRequest(bool delivered);

    Served& m_server;
    const boost::asio::ip::address m_peer;
    std::optional<Stream> m_stream;
    Budget::Share m_share;
    Stage m_stage = Stage::Opening;
    Outcome m_outcome = Outcome::Dropped;
    std::optional<Clock::duration> m_timeLeft; // while it waits for room
    bool m_looked = false;                     // for the first bytes
    bool m_followed = false;                   // more may come behind what was read
    std::optional<RequestReader> m_reader;     // until the request is served
    std::atomic<Authenticator::Verdict> m_verdict = Authenticator::Verdict::Busy;
    std::string m_user;                     // once authenticated
    Clock::time_point m_arrived;            // the whole request
    std::optional<std::size_t> m_operation; // while it is served and answered
    std::string m_answer;
    std::size_t m_sent = 0;
    bool m_kept = false; // the answer counts as waiting
    std::size_t m_dropped = 0;
};

} // namespace tarno::osa
