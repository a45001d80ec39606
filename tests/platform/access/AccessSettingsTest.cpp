#include "access/AccessSettings.h"

#include "platform/PlatformTest.h"

#include <gmock/gmock.h>

namespace tarno::osa
{
namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class AccessSettingsTest : public PlatformTest
{
  protected:
    AccessSettings Read(const std::string& attributes, const std::string& users = "")
    {
        Write("settings.xml", "<settings><server><endpoint name='kestrile-server' " + attributes + "/>" +
                                  users + "</server></settings>");
        return AccessInSettings("kestrile-server");
    }
    static std::string Refusal(const AccessSettings& access, const std::string& address)
    {
        return FaultOf<AccessFault>([&] { CheckAccess(access, address); });
    }
};

constexpr char kAllowed[] = "(no fault)";
constexpr char kTls[] = "certificate='c.pem' privateKey='/etc/k.pem'";
constexpr char kUsers[] = "<users> users </users>";

TEST_F(AccessSettingsTest, NamesFilesFromTheDocumentsFolder)
{
    const auto access = Read(std::string(kTls) + " clientCertificates='ca/ca.pem' insecure='1'", kUsers);
    EXPECT_EQ(access.certificate, Path("c.pem"));
    EXPECT_EQ(access.privateKey, "/etc/k.pem");
    EXPECT_EQ(access.clientCertificates, Path("ca/ca.pem"));
    EXPECT_EQ(access.users, Path("users"));
    EXPECT_TRUE(access.insecure);
    const auto none = Read("insecure='0'");
    EXPECT_EQ(none.certificate + none.privateKey + none.clientCertificates + none.users, "");
    EXPECT_FALSE(none.insecure);
}

TEST_F(AccessSettingsTest, KeepsTheOutsideOutUnlessSomebodyIsAsked)
{
    for (const std::string address :
         {"0.0.0.0", "::", "192.0.2.1", "128.0.0.1", "::ffff:192.0.2.1", "fe80::1%eth0"})
    {
        EXPECT_THAT(Refusal(Read(""), address),
                    AllOf(StartsWith(Path("settings.xml") + ": " + address), HasSubstr("insecure=\"1\"")));
        EXPECT_THAT(Refusal(Read(kTls), address), HasSubstr("can be reached from outside"));
        EXPECT_THAT(Refusal(Read("", kUsers), address), HasSubstr("unencrypted"));
        EXPECT_THAT(Refusal(Read("insecure='1'", kUsers), address), HasSubstr("unencrypted"));
        EXPECT_THAT(Refusal(Read("insecure='yes'"), address), HasSubstr("can be reached from outside"));
        EXPECT_EQ(Refusal(Read("insecure='1'"), address), kAllowed);
        EXPECT_EQ(Refusal(Read(kTls, kUsers), address), kAllowed);
        EXPECT_EQ(Refusal(Read(std::string(kTls) + " clientCertificates='a'"), address), kAllowed);
    }
}

TEST_F(AccessSettingsTest, TrustsTheMachineItself)
{
    for (const std::string address : {"127.0.0.1", "127.1.2.3", "::1", "::ffff:127.0.0.1", "no address"})
    {
        EXPECT_EQ(Refusal(Read(""), address), kAllowed);
        EXPECT_EQ(Refusal(Read("", kUsers), address), kAllowed);
    }
}

TEST_F(AccessSettingsTest, RefusesHalfATls)
{
    for (const std::string half : {"certificate='c'", "privateKey='k'"})
        EXPECT_THAT(Refusal(Read(half), "127.0.0.1"), HasSubstr("only one of certificate and privateKey"));
    EXPECT_THAT(Refusal(Read("clientCertificates='a'"), "127.0.0.1"),
                HasSubstr("clientCertificates but no TLS"));
}

} // namespace
} // namespace tarno::osa
