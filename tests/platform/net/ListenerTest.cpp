// Where a server listens, and what an operator reads if it can't.

#include "platform/net/ServerFixture.h"

#include <regex>

namespace tarno::osa
{
namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class ListenerTest : public ServerFixture
{
  protected:
    // The sentence that a server gives up with.
    std::string FailureOf(const ListenOptions& wrong)
    {
        Server loop(acceptor, limits);
        try
        {
            loop.Start(wrong);
        }
        catch (const SocketException& failure)
        {
            EXPECT_EQ(failure.GetError(), SocketException::kBindError);
            EXPECT_FALSE(loop.Listening());
            return failure.what();
        }
        return "";
    }
};

TEST_F(ListenerTest, TakesAFreePortAndSaysWhich)
{
    Start();
    EXPECT_TRUE(server->Listening());
    EXPECT_TRUE(std::regex_match(url, std::regex("http://127\\.0\\.0\\.1:[1-9][0-9]*/"))) << url;
}

TEST_F(ListenerTest, WritesAnIpv6AddressInBrackets)
{
    options.address = "::1";
    try
    {
        Start();
        EXPECT_TRUE(std::regex_match(url, std::regex("http://\\[::1\\]:[1-9][0-9]*/"))) << url;
    }
    catch (const SocketException& failure)
    {
        // A machine without IPv6.
        EXPECT_THAT(failure.what(), StartsWith("[::1]:0 "));
    }
}

TEST_F(ListenerTest, SaysThatThePortIsInUse)
{
    Start();
    EXPECT_EQ(FailureOf({"127.0.0.1", PortOf(url)}),
              "127.0.0.1:" + std::to_string(PortOf(url)) +
                  " is in use by another program; stop it or choose another port with --listen");
    EXPECT_THAT(Ask(), EndsWith("body"));
}

TEST_F(ListenerTest, SaysThatTheMachineHasNoSuchAddress)
{
    EXPECT_EQ(FailureOf({"192.0.2.1", 8080}),
              "192.0.2.1:8080 isn't an address of this machine; choose one that it has with --listen");
}

TEST_F(ListenerTest, SaysThatAnAddressIsNotNumeric)
{
    EXPECT_EQ(FailureOf({"camera.example", 8080}), "\"camera.example\" isn't a numeric IPv4 or IPv6 address; "
                                                   "choose one such as 127.0.0.1 with --listen");
    EXPECT_THAT(FailureOf({"", 8080}), StartsWith("\"\" isn't a numeric"));
}

TEST_F(ListenerTest, ServesWithTheShortestAndTheLongestQueue)
{
    for (const std::uint16_t backlog : std::array<std::uint16_t, 2>{0, 65535})
    {
        options.backlog = backlog;
        Start();
        EXPECT_THAT(Ask(), EndsWith("body"));
    }
}

} // namespace
} // namespace tarno::osa
