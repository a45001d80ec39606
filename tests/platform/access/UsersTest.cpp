#include "access/Users.h"

#include "access/Passwords.h"
#include "platform/PlatformTest.h"
#include "platform/access/Passwords.h"

#include <gmock/gmock.h>

namespace tarno::osa
{
namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

TEST(PasswordHash, IsHeldAgainstAPassword)
{
    for (const std::string hash : {kSecretByBcrypt, kSecretBySha, kSecretByYescrypt})
    {
        EXPECT_EQ(WhyNoPasswordHash(hash), "") << hash;
        EXPECT_TRUE(PasswordMatches("secret", hash)) << hash;
        EXPECT_FALSE(PasswordMatches("Secret", hash)) << hash;
        EXPECT_FALSE(PasswordMatches("", hash)) << hash;
        EXPECT_FALSE(PasswordMatches(hash, hash)) << hash;
    }
    EXPECT_FALSE(PasswordMatches("secret", "*"));
    EXPECT_FALSE(PasswordMatches("secret", ""));
}

TEST(PasswordHash, IsRefusedIfBrokenOrUnknown)
{
    for (const std::string hash :
         {"", "secret", "$apr1$salt$5zyKGTPoXcqbGDMbJK7yk/",
          "{SHA}5en6G6MezRroT3XKqkdPOmY/BfQ=", "$1$salt$qJH7.N4xYta3aEG/dfqo/0", "abWxyz1234567"})
        EXPECT_THAT(WhyNoPasswordHash(hash), HasSubstr("no method that this service takes")) << hash;
    const std::string whole = kSecretByBcrypt;
    for (const std::string& hash : {whole.substr(0, 59), whole + "x"})
        EXPECT_THAT(WhyNoPasswordHash(hash), HasSubstr("not whole")) << hash;
}

TEST(Users, AreReadFromLines)
{
    const Users users("users",
                      std::string("# the operators\n\nann:") + kSecretByBcrypt + "\r\nbob:" + kSecretBySha);
    EXPECT_TRUE(users.Has("ann"));
    EXPECT_TRUE(users.Has("bob"));
    EXPECT_FALSE(users.Has("# the operators"));
    EXPECT_EQ(users.HashFor("ann"), kSecretByBcrypt);
    EXPECT_EQ(users.HashFor("bob"), kSecretBySha);
    // Such a name costs what a wrong password costs.
    EXPECT_EQ(users.HashFor("eve"), kSecretByBcrypt);
}

TEST(Users, BeginBehindAByteOrderMark)
{
    const Users users("users", std::string("\xEF\xBB\xBF"
                                           "ann:") +
                                   kSecretByBcrypt + '\n');
    EXPECT_TRUE(users.Has("ann"));
    EXPECT_THAT(users.Mistakes(), testing::IsEmpty());
}

TEST(Users, LeaveOutAndNameALineThatCannotBeUsed)
{
    const std::string good = std::string("ann:") + kSecretByBcrypt + '\n';
    const auto mistake = [](const std::string& text)
    {
        const Users users("/etc/users", text);
        EXPECT_TRUE(users.Has("ann"));
        EXPECT_FALSE(users.Has("bob"));
        EXPECT_EQ(users.WhyNobody(), "");
        EXPECT_EQ(users.Mistakes().size(), 1U);
        return users.Mistakes().front();
    };
    EXPECT_THAT(mistake(good + "bob"), AllOf(StartsWith("/etc/users:2: "), HasSubstr("htpasswd -B")));
    EXPECT_THAT(mistake("\n:" + std::string(kSecretByBcrypt) + '\n' + good),
                StartsWith("/etc/users:2: the line isn't"));
    EXPECT_THAT(mistake("bob:secret\n" + good), StartsWith("/etc/users:1: the user \"bob\" can't log in"));
    EXPECT_THAT(mistake(good + good), StartsWith("/etc/users:2: the user \"ann\" is there twice"));
    // Such a name stands for a certificate.
    EXPECT_THAT(mistake(good + "CN=ann:" + kSecretByBcrypt),
                StartsWith("/etc/users:2: the user \"CN=ann\" can't"));
}

TEST(Users, SayWhyThereIsNone)
{
    EXPECT_THAT(Users("/etc/users", "# nobody\n").WhyNobody(),
                StartsWith("/etc/users: there is no user in it"));
    const Users broken("/etc/users", "bob");
    EXPECT_THAT(broken.WhyNobody(), StartsWith("/etc/users:1: the line isn't"));
    EXPECT_EQ(WhyNoPasswordHash(broken.HashFor("bob")), "");
    EXPECT_FALSE(broken.Has("bob"));
}

TEST(BasicCredentials, AreANameAndAPassword)
{
    const auto ann = ParseBasicCredentials(kAnnSecret);
    ASSERT_TRUE(ann);
    EXPECT_EQ(ann->name, "ann");
    EXPECT_EQ(ann->password, "secret");
    const auto colons = ParseBasicCredentials("bAsIc   YTpiOmM="); // a:b:c
    ASSERT_TRUE(colons);
    EXPECT_EQ(colons->name, "a");
    EXPECT_EQ(colons->password, "b:c");
    const auto empty = ParseBasicCredentials("Basic YTo="); // a:
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->password, "");
}

TEST(BasicCredentials, AreNothingElse)
{
    for (const std::string text :
         {"", "Basic", "Basic ", "Bearer YW5uOnNlY3JldA==", "Basic YW5uOnNlY3JldA", "Basic !!!!",
          "Basic YW5u",         // ann
          "Basic OnNlY3JldA==", // :secret
          "Basic YTpiAGM=",     // a:b, a NUL, c
          "Basic YW5u=OnNlY3JldA=="})
        EXPECT_FALSE(ParseBasicCredentials(text)) << text;
    // 600 characters; no hash takes so many.
    std::string longest = "Basic YTph";
    for (int i = 0; i < 200; ++i)
        longest += "YWFh";
    EXPECT_FALSE(ParseBasicCredentials(longest));
    EXPECT_TRUE(ParseBasicCredentials(longest.substr(0, 6 + 592)));
    EXPECT_FALSE(ParseBasicCredentials("Basic " + std::string(60000, 'Y')));
}

} // namespace
} // namespace tarno::osa
