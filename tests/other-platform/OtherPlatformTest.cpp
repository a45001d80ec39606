// The API library as it is delivered, with another maker's platform in the place of ours: it finds there all
// that it asks for when it is loaded, and serves.

#include "library/Platform.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstring>

namespace
{
class Socket : public tarno::osa::TcpSocket
{
  public:
    Socket(std::string input, std::string& sent) : m_input(std::move(input)), m_sent(sent) {}
    void SetBufferSize(unsigned int) const override {}
    void SendAll(const void* data, unsigned int size) override
    {
        m_sent.append(static_cast<const char*>(data), size);
    }
    int Recv(void* data, unsigned int size, unsigned int) override
    {
        const std::size_t count = std::min<std::size_t>(size, m_input.size());
        std::memcpy(data, m_input.data(), count);
        m_input.erase(0, count);
        return static_cast<int>(count);
    }

  private:
    std::string m_input;
    std::string& m_sent;
};

std::string Answer(const std::string& element)
{
    const std::string body = "<s:Envelope xmlns:s='http://schemas.xmlsoap.org/soap/envelope/'><s:Body>" +
                             element + "</s:Body></s:Envelope>";
    std::string sent;
    other::Acceptor()->AcceptSocket(new Socket(
        "POST / HTTP/1.1\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(body.size()) +
            "\r\n\r\n" + body,
        sent));
    return sent;
}

using EntryPoint = bool (*)();

TEST(OtherPlatform, HasAllThatTheLibraryAsksFor)
{
    void* const library = dlopen(API_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto start = reinterpret_cast<EntryPoint>(dlsym(library, "StartVarloAnalyticsApi"));
    const auto shutdown = reinterpret_cast<EntryPoint>(dlsym(library, "ShutdownVarloAnalyticsApi"));
    ASSERT_TRUE(start != nullptr && shutdown != nullptr);
    std::thread service(start);
    const std::string space = " xmlns='urn:schemas-varlo-com:service:VideoAnalytics:2'/>";
    EXPECT_THAT(Answer("<GetProfileList" + space), testing::HasSubstr("The only profile there is"));
    EXPECT_THAT(Answer("<GetBehaviorAvailability" + space),
                testing::HasSubstr("AlgorithmId:TheOnlyBehavior:1"));
    EXPECT_THAT(Answer("<GetDefaultScene" + space), testing::StartsWith("HTTP/1.1 200 OK"));
    EXPECT_TRUE(shutdown());
    service.join();
    EXPECT_EQ(other::Acceptor(), nullptr);
}
} // namespace
