#include <analytics/Faults.h>
#include <analytics/Mutex.h>
#include <analytics/PluginManager.h>
#include <analytics/Point.h>
#include <analytics/ProfileManager.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <thread>
#include <type_traits>

using analytics::AutoLock;
using analytics::Manifest;
using analytics::ManifestFields;
using analytics::Mutex;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
// Gives the results it was told to, and counts.
struct ScriptedLock
{
    int Lock() { return ++locks, lockResult; }
    int TryLock() { return ++tries, lockResult; }
    int Unlock() { return ++unlocks, unlockResult; }

    int lockResult = 0;
    int unlockResult = 0;
    int locks = 0;
    int tries = 0;
    int unlocks = 0;
};

ManifestFields Fields()
{
    ManifestFields fields;
    fields.id = "com.varlo.rule.objectremoval";
    fields.alias = "urn:varlo-com:AlgorithmId:ObjectRemoval:1";
    fields.name = "Object Removal";
    fields.home = "/plugins/objectremoval";
    fields.fixedCameraPosition = true;
    fields.resourceRequirement = std::numeric_limits<std::uint32_t>::max();
    fields.dependencies = {"com.varlo.engine.b", "com.varlo.engine.a"};
    fields.type = "rule";
    fields.supportsAdvancedMode = true;
    return fields;
}

void ExpectFields(const Manifest& manifest)
{
    EXPECT_TRUE(manifest.Valid());
    EXPECT_EQ(manifest.Id(), "com.varlo.rule.objectremoval");
    EXPECT_EQ(manifest.Alias(), "urn:varlo-com:AlgorithmId:ObjectRemoval:1");
    EXPECT_EQ(manifest.Name(), "Object Removal");
    EXPECT_EQ(manifest.Home(), "/plugins/objectremoval");
    EXPECT_EQ(manifest.Type(), "rule");
    EXPECT_TRUE(manifest.FixedCameraPosition());
    EXPECT_TRUE(manifest.SupportsAdvancedMode());
    EXPECT_EQ(manifest.ResourceRequirement(), 4294967295u);
    EXPECT_THAT(manifest.Dependencies(), ElementsAre("com.varlo.engine.b", "com.varlo.engine.a"));
}
} // namespace

TEST(AutoLockTest, BuiltWithFalseHoldsNothingAndUnlocksNothing)
{
    ScriptedLock lock;
    {
        const AutoLock<ScriptedLock> holder(lock, false);
        EXPECT_FALSE(holder.Locked());
    }
    EXPECT_EQ(lock.locks, 0);
    EXPECT_EQ(lock.unlocks, 0);
}

TEST(AutoLockTest, BuiltWithTrueHoldsTheLockForItsScope)
{
    ScriptedLock lock;
    {
        const AutoLock<ScriptedLock> holder(lock, true);
        EXPECT_TRUE(holder.Locked());
        EXPECT_EQ(lock.unlocks, 0);
    }
    EXPECT_EQ(lock.locks, 1);
    EXPECT_EQ(lock.unlocks, 1);
}

TEST(AutoLockTest, ALockThatRefusesIsNotHeldAndNotGivenUp)
{
    ScriptedLock lock;
    lock.lockResult = EINVAL;
    {
        AutoLock<ScriptedLock> holder(lock, true);
        EXPECT_FALSE(holder.Locked());
        EXPECT_EQ(holder.Lock(), EINVAL);
    }
    EXPECT_EQ(lock.unlocks, 0);
}

TEST(AutoLockTest, AnUnlockThatFailsLeavesItLocked)
{
    ScriptedLock lock;
    lock.unlockResult = EPERM;
    {
        AutoLock<ScriptedLock> holder(lock, true);
        EXPECT_EQ(holder.Unlock(), EPERM);
        EXPECT_TRUE(holder.Locked());
    }
    EXPECT_EQ(lock.unlocks, 2);
}

TEST(AutoLockTest, LocksAndUnlocksOnDemand)
{
    ScriptedLock lock;
    {
        AutoLock<ScriptedLock> holder(lock, false);
        EXPECT_EQ(holder.TryLock(), 0);
        EXPECT_TRUE(holder.Locked());
        EXPECT_EQ(holder.Unlock(), 0);
        EXPECT_FALSE(holder.Locked());
    }
    EXPECT_EQ(lock.tries, 1);
    EXPECT_EQ(lock.unlocks, 1);
    static_assert(!std::is_copy_constructible_v<AutoLock<ScriptedLock>>);
}

TEST(MutexTest, ARecursiveOneIsTakenAgainByItsThreadOnly)
{
    Mutex mutex(true);
    EXPECT_EQ(mutex.Lock(), 0);
    EXPECT_EQ(mutex.Lock(), 0);
    const auto tryElsewhere = [&mutex]
    {
        int result = -1;
        std::thread(
            [&]
            {
                result = mutex.TryLock();
                if (result == 0)
                    mutex.Unlock();
            })
            .join();
        return result;
    };
    EXPECT_EQ(tryElsewhere(), EBUSY);
    EXPECT_EQ(mutex.Unlock(), 0);
    EXPECT_EQ(tryElsewhere(), EBUSY);
    EXPECT_EQ(mutex.Unlock(), 0);
    EXPECT_EQ(tryElsewhere(), 0);
}

TEST(MutexTest, APlainOneRefusesItsOwnThread)
{
    Mutex mutex(false);
    EXPECT_EQ(mutex.Lock(), 0);
    EXPECT_EQ(mutex.Lock(), EDEADLK);
    EXPECT_EQ(mutex.TryLock(), EBUSY);
    EXPECT_EQ(mutex.Unlock(), 0);
    static_assert(noexcept(mutex.Lock())&& noexcept(mutex.Unlock()));
}

TEST(MutexTest, KeepsThreadsApart)
{
    Mutex mutex(true);
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&]
            {
                for (int j = 0; j < 10000; ++j)
                {
                    const AutoLock<Mutex> holder(mutex, true);
                    ++count;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 40000);
}

TEST(PointTest, KeepsCoordinates)
{
    using analytics::types::Point;
    EXPECT_EQ(Point().X(), 0);
    EXPECT_EQ(Point().Y(), 0);
    Point point(-3, 4);
    EXPECT_EQ(point.X(), -3);
    EXPECT_EQ(point.Y(), 4);
    point.SetX(5);
    point.SetY(-6);
    EXPECT_EQ(point.X(), 5);
    EXPECT_EQ(point.Y(), -6);
    point.Set(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(point.X(), -2147483647 - 1);
    EXPECT_EQ(point.Y(), 2147483647);
    static_assert(std::is_same_v<decltype(point.X()), std::int32_t>);
}

TEST(ProfileSummaryTest, TakesItsArgumentsInTheOrderOfItsFields)
{
    const analytics::ProfileSummary empty;
    EXPECT_EQ(empty.id, 0);
    EXPECT_EQ(empty.name, "");
    EXPECT_EQ(empty.preset, "");
    EXPECT_FALSE(empty.active);
    const analytics::ProfileSummary full(7, "name", "preset", true);
    EXPECT_EQ(full.id, 7);
    EXPECT_EQ(full.name, "name");
    EXPECT_EQ(full.preset, "preset");
    EXPECT_TRUE(full.active);
}

TEST(ManifestTest, AnUnfilledOneIsEmpty)
{
    const Manifest manifest;
    EXPECT_FALSE(manifest.Valid());
    EXPECT_EQ(manifest.Id() + manifest.Alias() + manifest.Name() + manifest.Home() + manifest.Type(), "");
    EXPECT_THAT(manifest.Dependencies(), IsEmpty());
    EXPECT_EQ(manifest.ResourceRequirement(), 0u);
    EXPECT_FALSE(manifest.FixedCameraPosition());
    EXPECT_FALSE(manifest.SupportsAdvancedMode());
}

TEST(ManifestTest, CopiesKeepEverything)
{
    Manifest assigned;
    {
        const Manifest original(Fields());
        ExpectFields(original);
        ExpectFields(Manifest(original));
        assigned = original;
    }
    ExpectFields(assigned);
    static_assert(std::is_polymorphic_v<Manifest>);
}

TEST(ManifestTest, PluginTypesHaveTheirNumbers)
{
    EXPECT_EQ(analytics::MediaSourcePlugin, 0);
    EXPECT_EQ(analytics::EnginePlugin, 1);
    EXPECT_EQ(analytics::RulePlugin, 2);
    EXPECT_EQ(analytics::EventSinkPlugin, 3);
    EXPECT_EQ(analytics::AllPlugin, 4);
    static_assert(std::is_same_v<analytics::PluginType, analytics::tagPluginType>);
}

TEST(FaultTest, CarryTheirTextAndAreNotTheSameKind)
{
    EXPECT_STREQ(analytics::ClientFault("Profile 3 does not exist").what(), "Profile 3 does not exist");
    EXPECT_STREQ(analytics::AnalyticsFault("The disk is full").what(), "The disk is full");
    static_assert(!std::is_base_of_v<analytics::ClientFault, analytics::AnalyticsFault>);
    static_assert(!std::is_base_of_v<analytics::AnalyticsFault, analytics::ClientFault>);
    static_assert(std::is_base_of_v<std::exception, analytics::ClientFault>);
}
