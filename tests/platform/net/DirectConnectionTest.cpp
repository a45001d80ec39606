// A connection on the thread that accepted it: what is served there, and what goes to the loop.

#include "net/DirectConnection.h"
#include "net/Listener.h"
#include "platform/net/Client.h"
#include "platform/net/ServerFixture.h"

#include <poll.h>

#include <vector>

namespace tarno::osa
{
namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class DirectConnectionTest : public testing::Test, protected DirectHost
{
  protected:
    DirectConnectionTest() : url(listener.Listen({.bufferBytes = 65536})) { client.ReceiveBuffer(4096); }
    ~DirectConnectionTest() override
    {
        adopted.clear();
        listener.Close();
    }

    void Adopt(std::shared_ptr<DirectConnection> taken) override { adopted.push_back(std::move(taken)); }
    void DirectEnded() override { ++ended; }
    void Served() override {}

    // The client's connection, with the first bytes received.
    void Connect(std::string_view bytes)
    {
        client.Connect(url);
        client.Send(bytes);
        connection = std::make_shared<DirectConnection>(static_cast<DirectHost&>(*this));
        ASSERT_TRUE(connection->Accept(listener));
    }
    std::optional<std::string> Receive() { return connection->Receive(Limits().maxRequestBytes); }

    Listener listener;
    std::string url;
    Client client;
    std::shared_ptr<DirectConnection> connection;
    std::vector<std::shared_ptr<DirectConnection>> adopted;
    int ended = 0;
};

TEST_F(DirectConnectionTest, HasARequestThatIsThereAsAWhole)
{
    Connect(Post("hello"));
    EXPECT_EQ(Receive(),
              "POST / HTTP/1.1\r\nContent-Length:                    5\r\nHost: camera\r\n\r\nhello");
    EXPECT_THAT(adopted, IsEmpty());
}

class NotAtOnceTest : public DirectConnectionTest, public testing::WithParamInterface<std::string>
{
};

TEST_P(NotAtOnceTest, GoesToTheLoopWithWhatHasCome)
{
    Connect(GetParam());
    EXPECT_EQ(Receive(), std::nullopt);
    ASSERT_THAT(adopted, SizeIs(1));
    EXPECT_EQ(adopted.front()->received, GetParam().substr(0, kFreeBytes));
    EXPECT_FALSE(adopted.front()->answered);
}

INSTANTIATE_TEST_SUITE_P(Requests, NotAtOnceTest,
                         testing::Values("", Post("hello").substr(0, 30), "\x16\x03\x01",
                                         Post("one") + Post("two"), Post(std::string(50'000, 'x'))),
                         [](const auto& request) { return std::to_string(request.param.size()) + "Bytes"; });

TEST_F(DirectConnectionTest, EndsWithAPeerThatIsGone)
{
    Connect("");
    client.EndSending();
    EXPECT_EQ(Receive(), std::nullopt);
    EXPECT_THAT(adopted, IsEmpty());
    connection.reset();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(client.ReadAll(), "");
}

TEST_F(DirectConnectionTest, AnswersAndEnds)
{
    Connect(Post("hello"));
    ASSERT_TRUE(Receive());
    connection->Answer("answer");
    EXPECT_THAT(adopted, IsEmpty());
    connection.reset();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(client.ReadAll(), "answer");
}

TEST_F(DirectConnectionTest, EndsWithoutAByteIfTheAnswerIsEmpty)
{
    Connect(Post("hello"));
    ASSERT_TRUE(Receive());
    connection->Answer("");
    connection.reset();
    EXPECT_EQ(client.ReadAll(), "");
}

TEST_F(DirectConnectionTest, LeavesToTheLoopWhatTheSystemDoesNotTake)
{
    const std::string large(8 * 1024 * 1024, 'x');
    Connect(Post("hello"));
    ASSERT_TRUE(Receive());
    connection->Answer(large);
    ASSERT_THAT(adopted, SizeIs(1));
    EXPECT_TRUE(connection->answered);
    const std::size_t sent = large.size() - connection->answer.size();
    EXPECT_GT(sent, 0U);
    EXPECT_LT(sent, large.size());
    EXPECT_EQ(client.ReadSome(sent).size(), sent);
}

// Closed now, the connection would be reset, and the client would lose its answer.
TEST_F(DirectConnectionTest, LeavesToTheLoopAPeerThatSendsOn)
{
    Connect(Post("hello"));
    ASSERT_TRUE(Receive());
    client.Send("more");
    ASSERT_TRUE(Eventually(
        [this]
        {
            pollfd socket = {connection->Socket(), POLLIN, 0};
            return ::poll(&socket, 1, 0) == 1;
        }));
    connection->Answer("answer");
    ASSERT_THAT(adopted, SizeIs(1));
    EXPECT_TRUE(connection->answered);
    EXPECT_EQ(connection->answer, "");
    adopted.clear();
}

TEST_F(DirectConnectionTest, KnowsThatItsPeerIsGone)
{
    Connect(Post("hello"));
    ASSERT_TRUE(Receive());
    EXPECT_FALSE(connection->PeerGone());
    client.EndSending();
    EXPECT_FALSE(connection->PeerGone());
    client.Vanish();
    EXPECT_TRUE(Eventually([this] { return connection->PeerGone(); }));
    connection->Answer("for nobody");
    EXPECT_THAT(adopted, IsEmpty());
}

TEST_F(DirectConnectionTest, OnceReleasedItIsTheCallers)
{
    Connect(Post("hello"));
    const analytics::platform::FileHandle taken(connection->Release());
    connection.reset();
    EXPECT_EQ(ended, 0);
    EXPECT_FALSE(client.Readable(std::chrono::milliseconds(100)));
}

} // namespace
} // namespace tarno::osa
