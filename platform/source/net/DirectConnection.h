#pragma once

#include "files/FileHandle.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace tarno::osa
{

class Listener;
class DirectConnection;

// What connections and threads outside of the loop use of their server. Any thread.
class DirectHost
{
  public:
    // The loop is to go on with it, from what it holds.
    virtual void Adopt(std::shared_ptr<DirectConnection> connection) = 0;
    // A connection that the loop didn't take is closed.
    virtual void DirectEnded() = 0;
    virtual void Served() = 0;

  protected:
    ~DirectHost() = default;
};

// A connection that belongs to the thread that accepted it, for as long as nothing has to be waited for: a
// request that is there as a whole, an answer that the system takes as a whole. Whatever isn't so simple
// goes to the loop. The last reference closes it, unless the loop took it. One thread at a time.
class DirectConnection : public std::enable_shared_from_this<DirectConnection>
{
  public:
    explicit DirectConnection(DirectHost& host) : m_host(host) {}
    ~DirectConnection();
    DirectConnection(const DirectConnection&) = delete;
    DirectConnection& operator=(const DirectConnection&) = delete;

    // Waits for a connection. False with the reason in errno.
    bool Accept(Listener& listener);
    // The request if it can be served at once. Otherwise the connection has gone to the loop, or is to end.
    std::optional<std::string> Receive(std::size_t maxRequestBytes);
    // The end, if the system takes the answer; what is left of it goes to the loop.
    void Answer(std::string answer);
    bool PeerGone() const;

    // For the loop.
    int Socket() const { return m_socket.Get(); }
    // The descriptor is the caller's, and the end of the connection as well.
    int Release();
    std::string received;  // what has been read of a request
    std::string answer;    // what is to be sent
    bool answered = false; // there is an answer, perhaps an empty one

  private:
    DirectHost& m_host;
    analytics::platform::FileHandle m_socket;
};

} // namespace tarno::osa
