// The server that asks for a name and a password.

#include "platform/PlatformTest.h"
#include "platform/access/Passwords.h"
#include "platform/net/ServerFixture.h"

#include <filesystem>
#include <future>

namespace tarno::osa
{
namespace
{

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Verdict = Authenticator::Verdict;

const auto kHere = boost::asio::ip::make_address("192.0.2.1");

class AuthenticatorTest : public PlatformTest
{
  protected:
    AuthenticatorTest() { Write("users", kAnn); }

    void Start()
    {
        Access access;
        access.passwords = std::make_unique<Authenticator>(Path("users"));
        server.emplace(acceptor, Limits(), std::move(access));
        url = server->Start({});
    }
    std::string Ask(const std::string& authorization, const std::string& fields = "") const
    {
        const Client client(url);
        client.Send(Post(
            "body", authorization.empty() ? fields : fields + "Authorization: " + authorization + "\r\n"));
        return client.ReadAll();
    }
    static Verdict Check(Authenticator& gate, const std::string& authorization,
                         const boost::asio::ip::address& from = kHere)
    {
        std::promise<Verdict> decided;
        auto later = decided.get_future();
        const auto now = gate.Authenticate(authorization, from,
                                           [&decided](Verdict verdict) { decided.set_value(verdict); });
        return now ? *now : later.get();
    }

    const std::string kAnn = std::string("ann:") + kSecretByBcrypt + '\n';
    ScriptedAcceptor acceptor;
    std::optional<Server> server;
    std::string url;
};

TEST_F(AuthenticatorTest, LetsAUserInWithoutPassingThePasswordOn)
{
    Start();
    for (int i = 0; i < 3; ++i)
        EXPECT_THAT(Ask(kAnnSecret, "Other: field\r\n"),
                    AllOf(StartsWith("POST / "), HasSubstr("Other: field"), EndsWith("body"),
                          Not(HasSubstr("Authorization"))));
}

TEST_F(AuthenticatorTest, RefusesEverybodyElseInTheirOwnSoap)
{
    Start();
    for (const std::string authorization : {"", kAnnWrong, kNobodySecret, "Basic ?", "Bearer token"})
    {
        EXPECT_THAT(
            Ask(authorization),
            AllOf(StartsWith("HTTP/1.1 401 Unauthorized\r\nContent-Type: text/xml; charset=utf-8\r\n"),
                  HasSubstr("\r\nWWW-Authenticate: Basic realm="), HasSubstr("<faultcode>SOAP-ENV:Client<")));
        EXPECT_THAT(
            Ask(authorization, "Content-Type: Application/SOAP+xml; action=x\r\n"),
            AllOf(StartsWith(
                      "HTTP/1.1 401 Unauthorized\r\nContent-Type: application/soap+xml; charset=utf-8\r\n"),
                  HasSubstr("\"http://www.w3.org/2003/05/soap-envelope\""),
                  HasSubstr("<SOAP-ENV:Value>SOAP-ENV:Sender<")));
    }
    EXPECT_THAT(Ask(kAnnSecret, "Authorization: " + std::string(kAnnSecret) + "\r\n"),
                StartsWith("HTTP/1.1 401 "));
    EXPECT_EQ(acceptor.served, 0);
}

TEST_F(AuthenticatorTest, TakesAChangedFileOver)
{
    Start();
    EXPECT_THAT(Ask(kAnnSecret), EndsWith("body"));
    Replace("users", std::string("bob:") + kSecretBySha + '\n');
    EXPECT_THAT(Ask(kAnnSecret), StartsWith("HTTP/1.1 401 "));
    EXPECT_THAT(Ask(kNobodySecret), EndsWith("body"));
    const std::string said = ErrorsOf(
        [this]
        {
            // Who was taken out is out, whatever else is wrong.
            Write("users", "broken\n" + kAnn);
            EXPECT_THAT(Ask(kNobodySecret), StartsWith("HTTP/1.1 401 "));
            EXPECT_THAT(Ask(kAnnSecret), EndsWith("body"));
            std::filesystem::remove(Path("users"));
            EXPECT_THAT(Ask(kAnnSecret), EndsWith("body"));
        });
    EXPECT_THAT(said, AllOf(StartsWith(Path("users") + ":1: the line isn't \"name:hash\""),
                            HasSubstr(Path("users") + ": it can't be read (No such file"),
                            EndsWith(". What was read before stays in force.\n")));
}

TEST_F(AuthenticatorTest, CannotBeginWithoutAFile)
{
    EXPECT_THAT(
        FaultOf<AccessFault>([this] { const Authenticator gate(Path("none")); }),
        AllOf(StartsWith(Path("none") + ": it can't be read (No such file"), HasSubstr("settings document")));
}

TEST_F(AuthenticatorTest, AnswersWhatItKnowsAtOnceWhileAnAddressIsSlowedDown)
{
    Authenticator gate(Path("users"));
    EXPECT_EQ(Check(gate, kAnnSecret), Verdict::Allowed);
    // All at a time, so that how fast the machine is makes no difference. None is the same as another.
    std::atomic<int> denied = 0;
    int slowed = 0;
    for (int i = 10; i < 40; ++i)
    {
        const std::string wrong = "Basic YW5uOndy" + std::to_string(i) + "ZZ";
        const auto verdict =
            gate.Authenticate(wrong, kHere, [&denied](Verdict given) { denied += given == Verdict::Denied; });
        slowed += verdict == Verdict::TooManyAttempts;
    }
    EXPECT_GE(slowed, 15);
    EXPECT_EQ(Check(gate, ""), Verdict::Denied);
    EXPECT_EQ(gate.Authenticate(kAnnSecret, kHere, nullptr), Verdict::Allowed);
    EXPECT_EQ(Check(gate, kNobodySecret, boost::asio::ip::make_address("2001:db8::1")), Verdict::Denied);
    EXPECT_TRUE(Eventually([&denied] { return denied >= 6; }));
}

TEST_F(AuthenticatorTest, HashesTheSameCredentialsOnceForAll)
{
    Authenticator gate(Path("users"));
    std::atomic<int> allowed = 0;
    for (int i = 0; i < 200; ++i)
    {
        const auto verdict = gate.Authenticate(
            kAnnSecret, kHere, [&allowed](Verdict given) { allowed += given == Verdict::Allowed; });
        allowed += verdict == Verdict::Allowed;
    }
    EXPECT_TRUE(Eventually([&allowed] { return allowed == 200; })) << allowed;
}

TEST_F(AuthenticatorTest, BoundsWhatWaitsForAHash)
{
    Authenticator gate(Path("users"));
    int busy = 0;
    // Of a dozen attempts from each address five have to wait for some seconds.
    for (int address = 0; address < 100; ++address)
        for (int i = 0; i < 12; ++i)
        {
            const std::string wrong =
                "Basic YW5uOndy" + std::to_string(100 + address) + std::to_string(10 + i) + "ZZZ";
            const auto from = boost::asio::ip::make_address("192.0.2." + std::to_string(address));
            busy += gate.Authenticate(wrong, from, [](Verdict) {}) == Verdict::Busy;
        }
    EXPECT_GT(busy, 0);
    EXPECT_EQ(Check(gate, ""), Verdict::Denied);
}

TEST_F(AuthenticatorTest, CountsTheAddressesOfAnIpv6NetworkAsOne)
{
    Authenticator gate(Path("users"));
    int slowed = 0;
    for (int i = 10; i < 40; ++i)
    {
        const auto from = boost::asio::ip::make_address("2001:db8::" + std::to_string(i));
        slowed += gate.Authenticate("Basic YW5uOndy" + std::to_string(i) + "ZZ", from, [](Verdict) {}) ==
                  Verdict::TooManyAttempts;
    }
    EXPECT_GE(slowed, 15);
    EXPECT_EQ(Check(gate, kAnnSecret, boost::asio::ip::make_address("2001:db8:1::1")), Verdict::Allowed);
    EXPECT_EQ(Check(gate, kAnnSecret, boost::asio::ip::make_address("::ffff:192.0.2.1")), Verdict::Allowed);
}

TEST_F(AuthenticatorTest, ServesTheOthersWhilePasswordsWaitAndStopsAtOnce)
{
    Start();
    EXPECT_THAT(Ask(kAnnSecret), EndsWith("body"));
    std::vector<std::unique_ptr<Client>> guessing;
    for (int i = 10; i < 40; ++i)
    {
        guessing.push_back(std::make_unique<Client>(url));
        guessing.back()->Send(Post("", "Authorization: Basic YW5uOndy" + std::to_string(i) + "ZZ\r\n"));
    }
    for (int i = 0; i < 5; ++i)
        EXPECT_THAT(Ask(kAnnSecret), EndsWith("body"));
    server->Stop();
    for (const auto& client : guessing)
        EXPECT_THAT(client->ReadAll(), Not(HasSubstr("HTTP/1.1 200")));
    EXPECT_EQ(acceptor.served, 6);
}

} // namespace
} // namespace tarno::osa
