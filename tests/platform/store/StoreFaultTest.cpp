#include "store/StoreConnection.h"

#include <gmock/gmock.h>

#include <cerrno>

using analytics::platform::ExplainStoreFault;
using analytics::platform::StoreFault;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{
// SQLite's codes, as its file format and interface fix them.
struct Case
{
    int code;
    int systemError;
    const char* words;
    bool reopen;
};
constexpr Case kCases[] = {
    {13, 0, "the disk is full; free some space", false},
    {10 | 3 << 8, EIO, "the disk doesn't read or write; check the disk and try again (Input/output error)",
     true},
    {10 | 3 << 8, ENOSPC, "the disk is full", true},
    {10 | 4 << 8, EDQUOT, "the disk is full", true},
    {10 | 19 << 8, EFBIG, "the disk is full", true},
    {10 | 12 << 8, 0, "the memory is exhausted", true},
    {8, 0, "it is read-only; make the folder and its files writable", true},
    {8 | 4 << 8, 0, "it is read-only", true},
    {11, 0, "it is damaged; restore a backup with --restore", true},
    {11 | 1 << 8, ENOSPC, "it is damaged", true},
    {26, 0, "it is damaged", true},
    {14, EACCES,
     "can't be opened; check that the folder exists and the service may write in it (Permission denied)",
     true},
    {5, 0, "another program holds it locked", false},
    {5 | 2 << 8, 0, "another program holds it locked", false},
    {6, 0, "another program holds it locked", false},
    {7, 0, "the memory is exhausted", false},
    {18, 0, "send a smaller one", false},
    {1, 0, "an unforeseen error; try again, and restart the service if it stays (no such table)", true},
    {-1, 0, "an unforeseen error", true},
};
} // namespace

TEST(StoreFaultTest, SaysWhatFailedAndWhatToDo)
{
    for (const Case& row : kCases)
    {
        const StoreFault fault = ExplainStoreFault(row.code, row.systemError, "/var/state", "no such table");
        EXPECT_THAT(fault.sentence, StartsWith("The profile store in /var/state failed: ")) << row.code;
        EXPECT_THAT(fault.sentence, HasSubstr(row.words)) << row.code;
        EXPECT_EQ(fault.reopen, row.reopen) << row.code;
    }
}
