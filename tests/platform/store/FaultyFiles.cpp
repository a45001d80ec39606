#include "FaultyFiles.h"

#include <sqlite3.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <new>
#include <string>

namespace faulty
{
namespace
{
sqlite3_vfs* gReal = nullptr;
Fault gFault = {};
int gLeft = 0; // calls until the fault; 0 while there is none to come
bool gFailed = false;
std::function<void()> gLook;

// The connection that writes to each database, for as long as it is open.
std::mutex gMutex;
std::map<std::string, const sqlite3_file*> gWriters;
int gCheckpoints = 0;

// In the shared memory of a log, as SQLite's file format fixes them.
constexpr int kCheckpointLock = 1;
constexpr int kNoLock = -1;

struct File : sqlite3_file
{
    std::string name;
    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};
sqlite3_file* Real(sqlite3_file* file) { return static_cast<File*>(file)->Real(); }
const sqlite3_io_methods& Do(sqlite3_file* file) { return *Real(file)->pMethods; }

// The code with which this call has to fail, or SQLITE_OK.
int Due(Call call)
{
    const bool over = gFailed && gFault.lasting;
    if (call != gFault.call || (!over && (gLeft == 0 || --gLeft > 0)))
        return SQLITE_OK;
    gFailed = true;
    errno = gFault.systemError;
    return gFault.code;
}

template <class Action>
int Try(Call call, const Action& action)
{
    const int code = Due(call);
    return code == SQLITE_OK ? action() : code;
}

void Look()
{
    if (gLook)
        gLook();
}

void RequireOneWriter(sqlite3_file* file, int offset)
{
    const std::lock_guard hold(gMutex);
    gCheckpoints += offset == kCheckpointLock ? 1 : 0;
    if (gWriters.emplace(static_cast<File*>(file)->name, file).first->second == file)
        return;
    std::fputs("a second connection writes or takes the checkpoint lock\n", stderr);
    std::abort();
}

int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 at)
{
    if (!static_cast<File*>(file)->name.empty()) // as that of a temporary file is
        RequireOneWriter(file, kNoLock);
    Look();
    if (gLook)
    {
        Do(file).xWrite(Real(file), data, size / 2, at);
        Look();
    }
    return Try(Call::kWrite, [&] { return Do(file).xWrite(Real(file), data, size, at); });
}

int Truncate(sqlite3_file* file, sqlite3_int64 size)
{
    Look();
    return Try(Call::kTruncate, [&] { return Do(file).xTruncate(Real(file), size); });
}

int Close(sqlite3_file* file)
{
    {
        const std::lock_guard hold(gMutex);
        std::erase_if(gWriters, [file](const auto& writer) { return writer.second == file; });
    }
    const int code = Do(file).xClose(Real(file));
    static_cast<File*>(file)->name.~basic_string();
    return code;
}

int ShmLock(sqlite3_file* file, int offset, int count, int flags)
{
    const bool writes = (flags & SQLITE_SHM_LOCK) != 0 && (flags & SQLITE_SHM_EXCLUSIVE) != 0;
    // A reader that meets half of a change in the log's index takes the lock of writing (0) for a moment.
    if (writes && offset == kCheckpointLock)
        RequireOneWriter(file, offset);
    const auto action = [&] { return Do(file).xShmLock(Real(file), offset, count, flags); };
    return (flags & SQLITE_SHM_LOCK) != 0 ? Try(Call::kLock, action) : action();
}

const sqlite3_io_methods kMethods = {
    2,
    Close,
    [](sqlite3_file* f, void* data, int size, sqlite3_int64 at)
    { return Try(Call::kRead, [&] { return Do(f).xRead(Real(f), data, size, at); }); },
    Write,
    Truncate,
    [](sqlite3_file*, int) { return Try(Call::kSync, [] { return SQLITE_OK; }); },
    [](sqlite3_file* f, sqlite3_int64* size) { return Do(f).xFileSize(Real(f), size); },
    [](sqlite3_file* f, int level) { return Try(Call::kLock, [&] { return Do(f).xLock(Real(f), level); }); },
    [](sqlite3_file* f, int level) { return Do(f).xUnlock(Real(f), level); },
    [](sqlite3_file* f, int* held) { return Do(f).xCheckReservedLock(Real(f), held); },
    [](sqlite3_file* f, int code, void* value) { return Do(f).xFileControl(Real(f), code, value); },
    [](sqlite3_file* f) { return Do(f).xSectorSize(Real(f)); },
    [](sqlite3_file* f) { return Do(f).xDeviceCharacteristics(Real(f)); },
    [](sqlite3_file* f, int page, int size, int extend, void volatile** memory)
    { return Try(Call::kMap, [&] { return Do(f).xShmMap(Real(f), page, size, extend, memory); }); },
    ShmLock,
    [](sqlite3_file* f) { Do(f).xShmBarrier(Real(f)); },
    [](sqlite3_file* f, int remove) { return Do(f).xShmUnmap(Real(f), remove); },
    nullptr,
    nullptr,
};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* memory, int flags, int* given)
{
    auto* const file = new (memory) File();
    file->pMethods = nullptr;
    const int code = Try(Call::kOpen, [&] { return gReal->xOpen(gReal, name, file->Real(), flags, given); });
    if (code == SQLITE_OK)
    {
        file->name = name == nullptr ? "" : name;
        file->pMethods = &kMethods;
    }
    else
        file->name.~basic_string();
    return code;
}

int Delete(sqlite3_vfs*, const char* name, int sync)
{
    Look();
    return Try(Call::kDelete, [&] { return gReal->xDelete(gReal, name, sync); });
}
} // namespace

void Install()
{
    if (gReal != nullptr)
        return;
    gReal = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs vfs = *gReal;
    vfs.zName = "faulty";
    vfs.szOsFile += static_cast<int>(sizeof(File));
    vfs.xOpen = Open;
    vfs.xDelete = Delete;
    sqlite3_vfs_register(&vfs, 1);
}

void Fail(const Fault& fault, int nth)
{
    gFault = fault;
    gLeft = nth;
    gFailed = false;
}

bool Heal()
{
    gFault = {};
    gLeft = 0;
    return gFailed;
}

int Checkpoints()
{
    const std::lock_guard hold(gMutex);
    return gCheckpoints;
}

void OnWrite(std::function<void()> look) { gLook = std::move(look); }

} // namespace faulty
