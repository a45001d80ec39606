#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarno::osa
{

// A client made of plain blocking sockets, which does what a test tells it and nothing else.
class Client
{
  public:
    Client(); // a socket without a connection
    explicit Client(const std::string& url);
    ~Client();
    Client(Client&& other) noexcept;
    Client& operator=(Client&& other) = delete;

    bool TryConnect(const std::string& url) const; // false if refused
    void Connect(const std::string& url) const;    // expects that it isn't
    // False if the server doesn't take it.
    bool Send(std::string_view bytes) const;
    void EndSending() const;
    // Everything up to the end of the stream. A reset adds "<reset>", silence for a minute "<silence>".
    std::string ReadAll() const;
    std::string ReadSome(std::size_t size) const;
    // Whether anything, the end included, comes within `time`.
    bool Readable(std::chrono::milliseconds time) const;
    // Small buffers keep what isn't read on the server's side.
    void ReceiveBuffer(int bytes) const;
    // Closes so that the server gets a reset.
    void Vanish();
    int Descriptor() const { return m_socket; }

  private:
    int m_socket;
};

std::uint16_t PortOf(const std::string& url);

// A request with `body`, and one exchange of it for the whole response.
std::string Post(std::string_view body, std::string_view fields = "");
std::string Ask(const std::string& url, std::string_view body = "body");

} // namespace tarno::osa
