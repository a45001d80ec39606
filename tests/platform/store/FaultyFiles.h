#pragma once

#include <functional>
#include <ostream>

// SQLite's way to its files, of which a test can make single calls fail. Between Fail() and Heal() only
// the calls of one kind are touched; else all pass, but for waiting for the disk. Always, a second connection
// to a database that writes, or brings its log in, ends the process. One thread, unless no call fails.
namespace faulty
{

enum class Call
{
    kOpen,
    kRead,
    kWrite,
    kTruncate,
    kSync,
    kDelete,
    kLock, // of the file or of the log's index
    kMap   // of the log's index
};

struct Fault
{
    const char* name;
    Call call;
    int code;        // SQLite's
    int systemError; // errno
    bool lasting;    // all calls from then on fail too
};

// By its name in what the test program prints.
inline void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.name; }

void Install();
// The `nth` call from now on fails, counted from 1.
void Fail(const Fault& fault, int nth);
// Ends it; whether any call has failed.
bool Heal();
// How often a log was brought in, or an attempt made.
int Checkpoints();
// Calls `look` before each write, when half of it is written, and before each change of a file's size
// or name; null ends it.
void OnWrite(std::function<void()> look);

} // namespace faulty
