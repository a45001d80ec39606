#include "access/TlsSource.h"

#include "platform/PlatformTest.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace tarno::osa
{
namespace
{

using testing::HasSubstr;

class TlsSourceTest : public PlatformTest
{
  protected:
    // A certificate that signs itself and ends in two days, and its key.
    void MakeCertificate() const
    {
        const std::string command =
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
            "-days 2 -subj /CN=camera -keyout '" +
            Path("camera.key") + "' -out '" + Path("camera.pem") + "' 2>/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
};

TEST_F(TlsSourceTest, WarnsOnceADayAndOfANewCertificateAtOnce)
{
    MakeCertificate();
    Write("settings.xml", "<settings/>");
    AccessSettings settings;
    settings.certificate = Path("camera.pem");
    settings.privateKey = Path("camera.key");
    TlsSource source(settings);
    const auto now = std::chrono::system_clock::now();
    const auto warned = [&](std::chrono::hours later) { return ErrorsOf([&] { source.Warn(now + later); }); };
    EXPECT_THAT(warned(std::chrono::hours(0)), HasSubstr("camera.pem: the certificate ends on 20"));
    EXPECT_EQ(warned(std::chrono::hours(1)), "");
    Write("settings.xml", "<settings><server><roles><viewer>ann</viewer></roles></server></settings>");
    source.Current(); // made again, of the same certificate
    EXPECT_EQ(warned(std::chrono::hours(1)), "");
    MakeCertificate();
    source.Current();
    EXPECT_THAT(warned(std::chrono::hours(1)), HasSubstr("camera.pem: the certificate ends on 20"));
    EXPECT_THAT(warned(std::chrono::hours(72)), HasSubstr("camera.pem: the certificate has ended on 20"));
}

} // namespace
} // namespace tarno::osa
