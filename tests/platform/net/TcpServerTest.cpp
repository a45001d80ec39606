// The server as the service and the host know it, with the settings that it is started with.

#include "net/ServerSettings.h"
#include "platform/net/ServerFixture.h"

#include <analytics/Platform.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>

namespace tarno::osa
{
namespace
{

using analytics::platform::DrainServer;
using analytics::platform::ServerFailure;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::chrono::seconds kDrainTime(60);

class TcpServerTest : public testing::Test
{
  protected:
    TcpServerTest()
    {
        std::filesystem::create_directory(folder);
        configuration.settingsFile = folder / "settings.xml";
        configuration.pluginFolder = folder;
        configuration.stateFolder = folder;
        configuration.onListening = [this](const std::string& where) { url = where; };
    }
    ~TcpServerTest() override { std::filesystem::remove_all(folder); }

    void Configure(const std::string& serverSettings)
    {
        std::ofstream(folder / "settings.xml")
            << "<settings><server>" << serverSettings << "</server></settings>";
        analytics::platform::Configure(configuration);
    }
    // Starts the server that the service starts.
    void Start()
    {
        server.emplace("kestrile-server", 0);
        server->SetBufferSize(65536);
        server->Start(&acceptor, 128);
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("tcp-server-test." + std::to_string(getpid()));
    analytics::platform::Configuration configuration;
    ScriptedAcceptor acceptor;
    std::optional<TcpServer> server;
    std::string url;
};

constexpr char kFreePort[] = "<endpoint name=\"kestrile-server\" address=\"127.0.0.1\" port=\"0\"/>";

TEST_F(TcpServerTest, ListensWhereTheSettingsSayAndTellsTheHost)
{
    Configure(kFreePort);
    Start();
    EXPECT_TRUE(server->Listening());
    EXPECT_THAT(url, StartsWith("http://127.0.0.1:"));
    EXPECT_THAT(Ask(url), EndsWith("body"));
    server->Stop();
    EXPECT_FALSE(server->Listening());
}

TEST_F(TcpServerTest, ListensWhereTheHostSaysFirst)
{
    configuration.listen = {"127.0.0.1", 0};
    Configure("<endpoint name=\"kestrile-server\" address=\"192.0.2.1\" port=\"1\"/>");
    Start();
    EXPECT_THAT(Ask(url), EndsWith("body"));
}

TEST_F(TcpServerTest, KnowsTheEndpointByItsName)
{
    Configure("<endpoint name=\"other\" address=\"192.0.2.1\" port=\"1\"/>"
              "<endpoint name=\"kestrile-server\" address=\"::1\" port=\"81\"/>");
    const auto named = ConfiguredEndpoint("kestrile-server", 0);
    EXPECT_EQ(named.address, "::1");
    EXPECT_EQ(named.port, 81);
    const auto given = ConfiguredEndpoint("192.0.2.2", 82);
    EXPECT_EQ(given.address, "192.0.2.2");
    EXPECT_EQ(given.port, 82);
}

TEST_F(TcpServerTest, FallsBackToThePortThatClientsKnow)
{
    for (const std::string endpoint : {"", "<endpoint name=\"kestrile-server\" port=\"70000\"/>",
                                       "<endpoint name=\"kestrile-server\" address=\"\" port=\"http\"/>"})
    {
        Configure(endpoint);
        const auto named = ConfiguredEndpoint("kestrile-server", 0);
        EXPECT_EQ(named.address, "127.0.0.1");
        EXPECT_EQ(named.port, 8080);
    }
}

TEST_F(TcpServerTest, ReadsItsLimitsFromTheSettings)
{
    Configure("<maxConnections>7</maxConnections><maxRequestBytes>5000</maxRequestBytes>"
              "<requestSeconds>3</requestSeconds>");
    EXPECT_EQ(LimitsFromSettings().maxConnections, 7U);
    EXPECT_EQ(LimitsFromSettings().maxRequestBytes, 5000U);
    EXPECT_EQ(LimitsFromSettings().requestTime, std::chrono::seconds(3));
}

TEST_F(TcpServerTest, TakesDefaultsForLimitsThatMakeNoSense)
{
    Configure("<maxConnections>0</maxConnections><maxRequestBytes>-5</maxRequestBytes>"
              "<requestSeconds>soon</requestSeconds>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(LimitsFromSettings().maxConnections, 1024U);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("\"soon\", isn't a whole number in "
                                   "range; 30 is used"));
    EXPECT_EQ(LimitsFromSettings().maxRequestBytes, 4'194'304U);
    EXPECT_EQ(LimitsFromSettings().requestTime, std::chrono::seconds(30));
}

TEST_F(TcpServerTest, KeepsWhyItCouldNotComeUp)
{
    Configure(kFreePort);
    EXPECT_EQ(ServerFailure(), "");
    Start();
    TcpServer second("127.0.0.1", PortOf(url));
    EXPECT_THROW(second.Start(&acceptor, 128), SocketException);
    EXPECT_THAT(ServerFailure(), HasSubstr(" is in use by another program; "));
    TcpServer third("127.0.0.1", 0);
    third.Start(&acceptor, 128);
    EXPECT_EQ(ServerFailure(), "");
}

TEST_F(TcpServerTest, RefusesWhatItCannotDo)
{
    Configure(kFreePort);
    TcpServer idle("127.0.0.1", 0);
    EXPECT_FALSE(idle.Listening());
    idle.Stop();
    EXPECT_THROW(idle.Start(nullptr, 128), SocketException);
    idle.Start(&acceptor, 128);
    EXPECT_THROW(idle.Start(&acceptor, 128), SocketException);
    EXPECT_THAT(Ask(url), EndsWith("body"));
    idle.Stop();
    idle.Start(&acceptor, 128);
    EXPECT_THAT(Ask(url), EndsWith("body"));
}

TEST_F(TcpServerTest, DrainsForTheHost)
{
    EXPECT_TRUE(DrainServer(kDrainTime)); // nothing runs
    Configure(kFreePort);
    Gate gate;
    acceptor.script = [&gate](TcpSocket& socket)
    {
        gate.Wait();
        ScriptedAcceptor::SendAll(socket, "done");
    };
    Start();
    const Client client(url);
    client.Send(Post("body"));
    ASSERT_TRUE(Eventually([this] { return acceptor.running == 1; }));
    EXPECT_FALSE(DrainServer(std::chrono::milliseconds(100)));
    EXPECT_FALSE(server->Listening());
    gate.Open();
    EXPECT_TRUE(DrainServer(kDrainTime));
    EXPECT_EQ(client.ReadAll(), "done");
    server.reset();
    EXPECT_TRUE(DrainServer(kDrainTime));
}

TEST_F(TcpServerTest, DrainsWhileItIsDestroyed)
{
    Configure(kFreePort);
    for (int i = 0; i < 20; ++i)
    {
        Start();
        const Client client(url);
        client.Send(Post("body"));
        auto drained = std::async(std::launch::async, [] { return DrainServer(kDrainTime); });
        server.reset();
        EXPECT_TRUE(drained.get());
    }
}

} // namespace
} // namespace tarno::osa
