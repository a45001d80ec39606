#pragma once

#include "net/Server.h"
#include "platform/net/Client.h"

#include <tarno/osa/TcpServer.h>
#include <tarno/osa/TcpSocket.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace tarno::osa
{

inline constexpr int kServing = static_cast<int>(Limits().workers); // requests at a time

// Serves requests as a test says. At first it answers with the request itself.
class ScriptedAcceptor : public ITcpSocketAccept
{
  public:
    void AcceptSocket(TcpSocket* socket) override
    {
        const std::unique_ptr<TcpSocket> owned(socket);
        ++served;
        ++running;
        script(*socket);
        --running;
    }

    static std::string ReadAll(TcpSocket& socket)
    {
        std::string all;
        std::array<char, 1000> buffer;
        while (const int count = socket.Recv(buffer.data(), buffer.size(), 10))
            all.append(buffer.data(), static_cast<std::size_t>(count));
        return all;
    }
    static void SendAll(TcpSocket& socket, const std::string& text)
    {
        socket.SendAll(text.data(), static_cast<unsigned int>(text.size()));
    }

    std::function<void(TcpSocket&)> script = [](TcpSocket& socket) { SendAll(socket, ReadAll(socket)); };
    std::atomic<int> served = 0;
    std::atomic<int> running = 0;
};

// Waits for something that happens on another thread, a minute at most.
template <class Condition>
bool Eventually(Condition condition)
{
    for (int round = 0; round < 6000 && !condition(); ++round)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}

// A server on a free port; a test sets limits, options and the script before it starts it.
class ServerFixture : public testing::Test
{
  protected:
    void Start()
    {
        server.emplace(acceptor, limits);
        url = server->Start(options);
    }
    std::string Ask(std::string_view body = "body") const { return osa::Ask(url, body); }
    // What the server says to bytes that it is sent.
    std::string AnswerTo(std::string_view bytes) const
    {
        const Client client(url);
        client.Send(bytes);
        return client.ReadAll();
    }

    Limits limits;
    ListenOptions options;
    ScriptedAcceptor acceptor;
    std::optional<Server> server; // stops before the acceptor goes
    std::string url;
};

// Holds up whoever comes through until it is opened.
class Gate
{
  public:
    void Wait() const { m_open.wait(false); }
    void Open()
    {
        m_open = true;
        m_open.notify_all();
    }

  private:
    std::atomic<bool> m_open = false;
};

} // namespace tarno::osa
