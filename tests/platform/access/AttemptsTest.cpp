// What is remembered of attempts to log in, at times that the tests choose.

#include "access/Passwords.h"

#include <gtest/gtest.h>

namespace tarno::osa
{
namespace
{

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

const AttemptThrottle::Time kNow = AttemptThrottle::Time() + std::chrono::hours(1);

BasicCredentials Ann(const std::string& password)
{
    BasicCredentials ann;
    ann.name = "ann";
    ann.password = password;
    return ann;
}

// When the n-th attempt from somebody may be looked at, if all come now.
milliseconds Wait(AttemptThrottle& throttle, const std::string& who, AttemptThrottle::Time now = kNow)
{
    const auto turn = throttle.Begin(who, now);
    return turn ? std::chrono::duration_cast<milliseconds>(*turn - now) : milliseconds(-1);
}

TEST(AttemptThrottle, MakesRepeatedFailuresWaitLongerAndLonger)
{
    AttemptThrottle throttle;
    for (unsigned i = 0; i <= AttemptThrottle::kFree; ++i)
        EXPECT_EQ(Wait(throttle, "a"), milliseconds(0)) << i;
    for (const int wait : {250, 750, 1750, 3750, 7750})
        EXPECT_EQ(Wait(throttle, "a"), milliseconds(wait));
    EXPECT_EQ(Wait(throttle, "a"), milliseconds(-1));
    EXPECT_EQ(Wait(throttle, "a", kNow + seconds(3)), milliseconds(8750));
    EXPECT_EQ(Wait(throttle, "a", kNow + seconds(60)), milliseconds(0));
    EXPECT_EQ(Wait(throttle, "a", kNow + seconds(60)), AttemptThrottle::kLongestPause);
}

TEST(AttemptThrottle, SlowsNobodyElse)
{
    AttemptThrottle throttle;
    for (int i = 0; i < 100; ++i)
        throttle.Begin("a", kNow);
    EXPECT_EQ(Wait(throttle, "b"), milliseconds(0));
}

TEST(AttemptThrottle, DoesNotCountWhatWasRight)
{
    AttemptThrottle throttle;
    for (int i = 0; i < 100; ++i)
    {
        EXPECT_EQ(Wait(throttle, "a"), milliseconds(0));
        throttle.Succeeded("a");
    }
    throttle.Succeeded("b");
}

TEST(AttemptThrottle, ForgetsAfterAWhile)
{
    AttemptThrottle throttle;
    for (int i = 0; i < 20; ++i)
        throttle.Begin("a", kNow);
    const auto later = kNow + AttemptThrottle::kForgotten + seconds(1);
    for (unsigned i = 0; i <= AttemptThrottle::kFree; ++i)
        EXPECT_EQ(Wait(throttle, "a", later), milliseconds(0));
}

TEST(AttemptThrottle, KeepsTheLatestOfManyAddresses)
{
    AttemptThrottle throttle;
    for (int i = 0; i < 10; ++i)
        throttle.Begin("first", kNow);
    for (int i = 0; i < 10; ++i)
        throttle.Begin("late", kNow + seconds(2));
    for (std::size_t i = 0; i < AttemptThrottle::kMost - 1; ++i)
        throttle.Begin(std::to_string(i), kNow + seconds(1));
    EXPECT_EQ(Wait(throttle, "first", kNow + seconds(2)), milliseconds(0));
    EXPECT_GT(Wait(throttle, "late", kNow + seconds(2)), milliseconds(0));
}

TEST(CredentialCache, KnowsWhatWasRightForAWhile)
{
    CredentialCache cache;
    const std::string key = cache.KeyOf(Ann("secret"), "hash");
    EXPECT_FALSE(cache.Knows(key, kNow));
    cache.Remember(key, kNow);
    EXPECT_TRUE(cache.Knows(key, kNow));
    EXPECT_TRUE(cache.Knows(cache.KeyOf(Ann("secret"), "hash"), kNow + minutes(4)));
    EXPECT_FALSE(cache.Knows(key, kNow + CredentialCache::kLifetime));
    cache.Clear();
    EXPECT_FALSE(cache.Knows(key, kNow));
}

TEST(CredentialCache, TellsCredentialsApart)
{
    const CredentialCache cache;
    const std::string key = cache.KeyOf(Ann("secret"), "hash");
    EXPECT_EQ(key.size(), 32U);
    EXPECT_EQ(key.find("secret"), std::string::npos);
    EXPECT_NE(key, cache.KeyOf(Ann("Secret"), "hash"));
    EXPECT_NE(key, cache.KeyOf(Ann("secret"), "hush"));
    EXPECT_NE(cache.KeyOf(Ann("xy"), "h"), cache.KeyOf(Ann("y"), "hx"));
    // Another process has another secret.
    EXPECT_NE(key, CredentialCache().KeyOf(Ann("secret"), "hash"));
}

TEST(CredentialCache, HoldsABoundedNumber)
{
    CredentialCache cache;
    cache.Remember("first", kNow);
    cache.Remember("second", kNow + seconds(1));
    for (std::size_t i = 2; i <= CredentialCache::kMost; ++i)
        cache.Remember(std::to_string(i), kNow + seconds(2));
    EXPECT_FALSE(cache.Knows("first", kNow + seconds(2)));
    EXPECT_TRUE(cache.Knows("second", kNow + seconds(2)));
    EXPECT_TRUE(cache.Knows(std::to_string(CredentialCache::kMost), kNow + seconds(2)));
}

} // namespace
} // namespace tarno::osa
