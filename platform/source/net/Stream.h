#pragma once

#include "access/TlsSession.h"

#include <boost/asio/ip/tcp.hpp>

#include <memory>
#include <span>
#include <string_view>

namespace tarno::osa
{

// The two directions of one connection, plain or through TLS. Nothing here waits: what can't go on says
// for what. One thread at a time.
class Stream
{
  public:
    using Socket = boost::asio::ip::tcp::socket;

    // With `tls`, the context of its sessions, everything goes through TLS. Throws std::bad_alloc.
    Stream(Socket socket, const std::shared_ptr<ssl_ctx_st>& tls);

    // What has to be agreed on first; to be repeated until it is Done.
    StreamResult Open();
    StreamResult Read(std::span<char> room);
    StreamResult Write(std::string_view bytes);
    // Whether there is something to read without anything new from the peer.
    bool Buffered() const { return m_tls != nullptr && m_tls->Buffered(); }
    // After NotTls: the peer is answered in what it speaks.
    void GoPlain() { m_tls.reset(); }
    // Tells the peer that nothing more will be sent.
    void EndSending();
    // Reads what the peer still sends without looking at it. To be used after EndSending().
    StreamResult Drop(std::span<char> room) { return ReadPlain(room); }
    void Close();

    // To wait on.
    Socket& Wire() { return m_socket; }
    boost::asio::ip::address Peer() const; // unspecified if the connection is gone

  private:
    StreamResult ReadPlain(std::span<char> room);

    Socket m_socket;
    std::unique_ptr<TlsSession> m_tls; // goes before the socket
};

} // namespace tarno::osa
