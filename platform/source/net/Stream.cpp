#include "net/Stream.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>

#include <utility>

namespace tarno::osa
{
namespace
{

namespace asio = boost::asio;
using Error = boost::system::error_code;

StreamResult Result(const Error& error, std::size_t count, StreamState whileWaiting)
{
    if (!error)
        return {StreamState::Done, count};
    if (error == asio::error::would_block)
        return {whileWaiting};
    return {error == asio::error::eof ? StreamState::Ended : StreamState::Failed};
}

} // namespace

Stream::Stream(Socket socket, const std::shared_ptr<ssl_ctx_st>& tls) : m_socket(std::move(socket))
{
    Error ignored; // A connection that is gone by now shows it at the first read.
    m_socket.non_blocking(true, ignored);
    m_socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    if (tls != nullptr)
        m_tls = std::make_unique<TlsSession>(*tls, m_socket.native_handle());
}

StreamResult Stream::Open()
{
    return m_tls == nullptr ? StreamResult{StreamState::Done} : m_tls->Handshake();
}

StreamResult Stream::Read(std::span<char> room)
{
    return m_tls == nullptr ? ReadPlain(room) : m_tls->Read(room);
}

StreamResult Stream::ReadPlain(std::span<char> room)
{
    Error error;
    const std::size_t count = m_socket.read_some(asio::buffer(room.data(), room.size()), error);
    return Result(error, count, StreamState::WaitRead);
}

StreamResult Stream::Write(std::string_view bytes)
{
    if (m_tls != nullptr)
        return m_tls->Write(bytes);
    Error error;
    const std::size_t count = m_socket.write_some(asio::buffer(bytes), error);
    return Result(error, count, StreamState::WaitWrite);
}

void Stream::EndSending()
{
    if (m_tls != nullptr)
        m_tls->End();
    m_tls.reset();
    Error ignored; // If the peer is gone, the next read says so.
    m_socket.shutdown(Socket::shutdown_send, ignored);
}

void Stream::Close()
{
    m_tls.reset();
    Error ignored;
    m_socket.close(ignored);
}

asio::ip::address Stream::Peer() const
{
    Error gone;
    const auto peer = m_socket.remote_endpoint(gone);
    return gone ? asio::ip::address() : peer.address();
}

} // namespace tarno::osa
