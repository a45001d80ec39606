#pragma once

#include "net/Budget.h"
#include "net/PasswordGate.h"
#include "net/RequestReader.h"
#include "net/Stream.h"

#include <boost/asio/steady_timer.hpp>

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarno::osa
{

class Connection;
class Exchange;

// What a connection uses of its server, on the loop's thread.
class ConnectionHost
{
  public:
    virtual const Limits& ConnectionLimits() const = 0;
    virtual Budget& Memory() = 0;
    // Room to read into, for the length of one call.
    virtual std::span<char> Scratch() = 0;
    // True once nobody is to be waited for any longer than an answer needs.
    virtual bool Ending() const = 0;
    // Null if nobody has to say who he is.
    virtual PasswordGate* Passwords() = 0;
    // Has a worker serve the exchange.
    virtual void Serve(std::shared_ptr<Exchange> exchange) = 0;
    virtual void Ended(Connection& connection) = 0;

  protected:
    ~ConnectionHost() = default;
};

// One accepted connection: reads a whole request, finds out whether its sender may make it, has it
// worked on, sends the answer, closes. Held to
// a deadline wherever it waits for its peer. Everything happens on the loop's thread.
class Connection : public std::enable_shared_from_this<Connection>
{
  public:
    using Socket = Stream::Socket;

    Connection(Stream stream, ConnectionHost& host);

    // From the bytes that have been read of it already.
    void Start(std::string_view received);
    // From what is left of the answer, instead of Start().
    void Send(std::string answer);
    // Closes now unless a request is in progress.
    void GiveUp();
    void Close();

  private:
    enum class Stage
    {
        Reading,
        Admitting,
        Working,
        Sending,
        Lingering,
        Closed
    };
    using Step = void (Connection::*)();

    void Within(std::chrono::milliseconds time);
    void OnDeadline();
    // Goes on with `next`, if the stage is still the same by then.
    void Await(Socket::wait_type event, Step next);

    // The same, with what `result` waits for. False if it waits for nothing.
    bool Await(const StreamResult& result, Step next);

    void Open();
    void ReadRequest();
    void AwaitRequest();
    void Judge(RequestReader::Outcome outcome);
    void SendContinue();
    void Refuse(Refusal reason);
    void Admit();
    void OnVerdict(PasswordGate::Verdict verdict);
    void Work();
    void OnPeerGone();
    void SendMore();
    void Linger();
    void DropInput();

    ConnectionHost& m_host;
    Stream m_stream;
    boost::asio::steady_timer m_timer;
    Budget::Share m_share;
    Stage m_stage = Stage::Reading;
    std::optional<RequestReader> m_reader; // while reading and admitting
    std::shared_ptr<Exchange> m_exchange;  // while working
    std::string m_answer;
    std::size_t m_sent = 0;
    bool m_kept = false; // the answer counts as waiting
    std::size_t m_dropped = 0;
};

} // namespace tarno::osa
