#include "store/StoreFault.h"

#include <sqlite3.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace analytics::platform
{
namespace
{
constexpr int kPrimary = 0xff; // the low byte of an extended code is the code that it refines

struct Row
{
    int code;
    bool reopen;
    bool systemReason; // errno says more than the code
    const char* text;
};
// The first row with the extended code counts, then the first with the primary one.
constexpr Row kRows[] = {
    {SQLITE_FULL, false, false, "the disk is full; free some space on it and try again"},
    {SQLITE_READONLY, true, false,
     "it is read-only; make the folder and its files writable for the service and try again"},
    {SQLITE_CORRUPT, true, false,
     "it is damaged; restore a backup with --restore, or start the service with --recover, which puts the "
     "last "
     "good copy in its place and keeps the damaged files"},
    {SQLITE_NOTADB, true, false,
     "it is damaged; restore a backup with --restore, or start the service with --recover, which puts the "
     "last "
     "good copy in its place and keeps the damaged files"},
    {SQLITE_CANTOPEN, true, true,
     "its file can't be opened; check that the folder exists and the service may write in it"},
    {SQLITE_IOERR_NOMEM, true, false, "the memory is exhausted; try again later"},
    {SQLITE_IOERR, true, true, "the disk doesn't read or write; check the disk and try again"},
    {SQLITE_BUSY, false, false, "another program holds it locked; end that program and try again"},
    {SQLITE_LOCKED, false, false, "another program holds it locked; end that program and try again"},
    {SQLITE_PROTOCOL, true, false, "another program holds it locked; end that program and try again"},
    {SQLITE_NOMEM, false, false, "the memory is exhausted; try again later"},
    {SQLITE_PERM, true, false,
     "access to it is denied; make the folder and its files writable for the service and try again"},
    {SQLITE_TOOBIG, false, false, "the text is larger than it can take; send a smaller one"},
    {SQLITE_CONSTRAINT, false, false, "the identifiers are used up; begin with an empty state folder"},
};
constexpr Row kOther = {0, true, false,
                        "an unforeseen error; try again, and restart the service if it stays"};

// However SQLite calls them, these say that there is no room to write.
constexpr std::array kNoRoom = {ENOSPC, EDQUOT, EFBIG};

const Row& RowOf(int code, int systemError)
{
    if ((code & kPrimary) == SQLITE_IOERR)
        for (const int error : kNoRoom)
            if (error == systemError)
                return RowOf(SQLITE_FULL, 0);
    for (const int wanted : {code, code & kPrimary})
        for (const Row& row : kRows)
            if (row.code == wanted)
                return row;
    return kOther;
}
} // namespace

StoreFault ExplainStoreFault(int code, int systemError, const std::string& folder, const std::string& detail)
{
    const Row& row = RowOf(code, systemError);
    // After an I/O error the connection is not to be trusted, whatever was behind it.
    const bool reopen = row.reopen || (code & kPrimary) == SQLITE_IOERR;
    std::string reason = row.text;
    if (row.systemReason && systemError != 0)
        reason += " (" + std::generic_category().message(systemError) + ")";
    else if (&row == &kOther)
        reason += " (" + detail + ")";
    return {"The profile store in " + folder + " failed: " + reason, reopen};
}

} // namespace analytics::platform
