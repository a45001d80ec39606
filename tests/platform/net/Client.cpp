#include "platform/net/Client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <utility>

namespace tarno::osa
{

Client::Client() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) { EXPECT_GE(m_socket, 0); }

Client::Client(const std::string& url) : Client() { Connect(url); }

Client::~Client()
{
    if (m_socket >= 0)
        ::close(m_socket);
}

Client::Client(Client&& other) noexcept : m_socket(std::exchange(other.m_socket, -1)) {}

bool Client::TryConnect(const std::string& url) const
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(PortOf(url));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

void Client::Connect(const std::string& url) const { EXPECT_TRUE(TryConnect(url)) << errno; }

bool Client::Send(std::string_view bytes) const
{
    while (!bytes.empty())
    {
        const ssize_t count = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void Client::EndSending() const { ::shutdown(m_socket, SHUT_WR); }

std::string Client::ReadAll() const
{
    std::string all;
    std::array<char, 65536> buffer;
    for (;;)
    {
        if (!Readable(std::chrono::minutes(1)))
            return all + "<silence>";
        const ssize_t count = ::recv(m_socket, buffer.data(), buffer.size(), 0);
        if (count < 0)
            return all + "<reset>";
        if (count == 0)
            return all;
        all.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

std::string Client::ReadSome(std::size_t size) const
{
    std::string some(size, '\0');
    const ssize_t count = ::recv(m_socket, some.data(), size, MSG_WAITALL);
    some.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return some;
}

bool Client::Readable(std::chrono::milliseconds time) const
{
    pollfd socket = {m_socket, POLLIN, 0};
    return ::poll(&socket, 1, static_cast<int>(time.count())) == 1;
}

void Client::ReceiveBuffer(int bytes) const
{
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof(bytes));
}

void Client::Vanish()
{
    const linger now = {1, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &now, sizeof(now));
    ::close(std::exchange(m_socket, -1));
}

std::uint16_t PortOf(const std::string& url)
{
    return static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
}

std::string Post(std::string_view body, std::string_view fields)
{
    return "POST / HTTP/1.1\r\nHost: camera\r\n" + std::string(fields) +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

std::string Ask(const std::string& url, std::string_view body)
{
    const Client client(url);
    client.Send(Post(body));
    return client.ReadAll();
}

} // namespace tarno::osa
