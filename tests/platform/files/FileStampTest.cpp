#include "files/File.h"

#include "platform/PlatformTest.h"

#include <cerrno>

using analytics::platform::FileIdentity;
using analytics::platform::IdentityOf;

namespace
{
class FileIdentityTest : public PlatformTest
{
  protected:
    FileIdentity Of(const std::string& name) const { return IdentityOf(Path(name)); }
};

TEST_F(FileIdentityTest, StaysWithTheFileWhateverItHoldsAndHoweverItIsCalled)
{
    Write("a", "text");
    const FileIdentity before = Of("a");
    EXPECT_EQ(before.error, 0);
    Write("a", "longer text");
    EXPECT_EQ(Of("a"), before);
    std::filesystem::create_symlink(Path("a"), Path("link"));
    EXPECT_EQ(Of("link"), before);
    std::filesystem::rename(Path("a"), Path("b"));
    EXPECT_EQ(Of("b"), before);
}

TEST_F(FileIdentityTest, IsAnotherForAnotherFileWithTheSameText)
{
    Write("a", "text");
    const FileIdentity before = Of("a");
    Replace("a", "text");
    EXPECT_NE(Of("a"), before);
}

TEST_F(FileIdentityTest, TellsWhyThereIsNoFile)
{
    EXPECT_EQ(Of("missing").error, ENOENT);
    EXPECT_EQ(Of("settings.xml/file").error, ENOTDIR);
    EXPECT_NE(Of("missing"), Of("settings.xml"));
}
} // namespace
