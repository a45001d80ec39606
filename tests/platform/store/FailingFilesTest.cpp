// Every call by which SQLite reaches its files fails once, and from there on, in every operation: what is
// answered and what is stored agree, also after a kill, and the store works again.

#include "platform/store/FaultFixture.h"

#include <sqlite3.h>

#include <cerrno>

using faulty::Call;
using testing::AnyOf;
using testing::Eq;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{
constexpr char kNone[] = "(no fault)";
constexpr char kUncertain[] = "look before you repeat it";

constexpr faulty::Fault kFaults[] = {
    {"full", Call::kWrite, SQLITE_FULL, ENOSPC, false},
    {"full from there on", Call::kWrite, SQLITE_FULL, ENOSPC, true},
    {"read-only", Call::kWrite, SQLITE_READONLY, EROFS, false},
    {"write error", Call::kWrite, SQLITE_IOERR_WRITE, EIO, false},
    {"write error from there on", Call::kWrite, SQLITE_IOERR_WRITE, EIO, true},
    {"sync error", Call::kSync, SQLITE_IOERR_FSYNC, EIO, false},
    {"sync error from there on", Call::kSync, SQLITE_IOERR_FSYNC, EIO, true},
    {"read error", Call::kRead, SQLITE_IOERR_READ, EIO, false},
    {"read error from there on", Call::kRead, SQLITE_IOERR_READ, EIO, true},
    {"truncate error", Call::kTruncate, SQLITE_IOERR_TRUNCATE, EIO, false},
    {"open error", Call::kOpen, SQLITE_CANTOPEN, EMFILE, false},
    {"delete error", Call::kDelete, SQLITE_IOERR_DELETE, EIO, false},
    {"locked", Call::kLock, SQLITE_BUSY, EAGAIN, false},
    {"lock error", Call::kLock, SQLITE_IOERR_LOCK, EIO, false},
    {"index error", Call::kMap, SQLITE_IOERR_SHMMAP, ENOMEM, false},
};
} // namespace

class FailingFilesTest : public FaultFixture, public testing::WithParamInterface<faulty::Fault>
{
  protected:
    // The operation once, with the fault at the nth call. False once the fault isn't reached any more.
    bool Strike(const Operation& operation, const std::string& before, const std::string& after, int nth)
    {
        faulty::Fail(GetParam(), nth);
        const std::string fault = AnalyticsFaultOf([&] { operation.run(*m_manager); });
        const bool struck = faulty::Heal();
        const std::string killed = DumpAfterKill();
        if (fault == kNone)
            EXPECT_EQ(killed, after);
        else if (fault.ends_with(kUncertain))
            EXPECT_THAT(killed, AnyOf(before, after));
        else
            EXPECT_EQ(killed, before) << fault;
        if (fault == kNone)
            EXPECT_EQ(Dump(), after);
        else
        {
            EXPECT_THAT(fault, StartsWith("The profile store in " + Path("state") + " failed: "));
            EXPECT_EQ(Dump(), killed);
        }
        return struck;
    }
    std::string DumpAfter(const Operation& operation)
    {
        operation.run(*m_manager);
        const std::string after = Dump();
        Restore();
        return after;
    }
};

TEST_P(FailingFilesTest, AnswerAndStoreAgreeAndTheNextTryWorks)
{
    const std::string before = Dump();
    for (const Operation& operation : kChanges)
    {
        const std::string after = DumpAfter(operation);
        int nth = 1;
        while (Strike(operation, before, after, nth))
        {
            SCOPED_TRACE(std::string(operation.name) + ", call " + std::to_string(nth));
            if (Dump() == before)
                operation.run(*m_manager);
            EXPECT_EQ(Dump(), after);
            Reopen();
            EXPECT_EQ(Dump(), after);
            ASSERT_FALSE(HasFailure());
            Restore();
            ASSERT_LT(++nth, 1000);
        }
        ASSERT_FALSE(HasFailure()) << operation.name << ", call " << nth;
        Restore();
    }
}

TEST_P(FailingFilesTest, ReadsEndInAFaultAndChangeNothing)
{
    const std::string before = Dump();
    bool struck = true;
    for (int nth = 1; struck; ++nth)
    {
        Restore();
        std::string read;
        faulty::Fail(GetParam(), nth);
        const std::string fault = AnalyticsFaultOf([&] { read = Dump(); });
        struck = faulty::Heal();
        if (fault == kNone)
            EXPECT_EQ(read, before);
        else
            EXPECT_THAT(fault, StartsWith("The profile store in " + Path("state") + " failed: "));
        EXPECT_EQ(Dump(), before);
    }
}

// With the log of a killed process to read, and with none.
TEST_P(FailingFilesTest, AFailedStartLosesNothing)
{
    for (const Operation& operation : {kChanges[1], kChanges[7]})
    {
        operation.run(*m_manager);
        const std::string before = Dump();
        CopyStore(Path("killed"));
        m_manager.reset();
        bool struck = true;
        for (int nth = 1; struck; ++nth)
        {
            std::filesystem::remove_all(Path("state"));
            std::filesystem::copy(Path("killed"), Path("state"));
            faulty::Fail(GetParam(), nth);
            const std::string fault = AnalyticsFaultOf([&] { Open(); });
            m_manager.reset(); // closes with the fault still there
            struck = faulty::Heal();
            if (fault != kNone)
            {
                EXPECT_THAT(fault, StartsWith("The profile store in " + Path("state") + " failed: "));
            }
            Open();
            EXPECT_EQ(Dump(), before) << nth;
            m_manager.reset();
        }
        Restore();
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, FailingFilesTest, testing::ValuesIn(kFaults),
                         [](const auto& row)
                         {
                             std::string name = row.param.name;
                             std::erase_if(name, [](char c) { return c == ' ' || c == '-'; });
                             return name;
                         });
