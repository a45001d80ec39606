#include "store/StoreRecovery.h"

#include <analytics/Faults.h>

#include "Runtime.h"
#include "files/FileHandle.h"
#include "files/FileStamp.h"
#include "store/Salvage.h"
#include "store/StateFolder.h"
#include "store/Store.h"
#include "store/StoreConnection.h"
#include "store/StoreFault.h"
#include "store/StorePages.h"

#include <fcntl.h>
#include <sqlite3.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace analytics::platform
{
namespace
{
// What belongs to a database file, by what its name adds; the file itself comes last, so that it goes
// only when the others have gone.
constexpr const char* kParts[] = {"-journal", "-shm", "-wal", ""};

bool Exists(const std::string& path) { return StampOf(path).error == 0; }

void Rename(const std::string& from, const std::string& to)
{
    if (std::rename(from.c_str(), to.c_str()) != 0)
        throw AnalyticsFault("The file " + from + " can't be renamed to " + to + ": " +
                             std::generic_category().message(errno) +
                             "; make the state folder writable for the service and try again");
}

// Complete and not in its place yet. A file of another name may be anything that was cut off.
std::string Saved(const std::string& file) { return file + ".recovered"; }

// Where the damaged files go: the first number that none of them has.
std::string DamagedName(const std::string& file)
{
    for (int number = 1;; ++number)
    {
        const std::string name = file + ".damaged-" + std::to_string(number);
        bool free = true;
        for (const char* part : kParts)
            free = free && !(Exists(name + part) && Exists(file + part));
        if (free && !Exists(name))
            return name;
    }
}

// Damage is a matter of what was read, or of the disk that doesn't read.
bool MeansDamage(int code)
{
    return (code & 0xff) == SQLITE_CORRUPT || code == SQLITE_NOTADB || code == SQLITE_IOERR_READ ||
           code == SQLITE_IOERR_SHORT_READ;
}

bool IsDamaged(const std::string& file)
{
    try
    {
        const StoreConnection connection(file, StoreConnection::Use::kWrite);
        return false;
    }
    catch (const SQLite::Exception& error)
    {
        if (MeansDamage(error.getErrorCode()))
            return true;
        throw;
    }
}

// In a file of another name until it is whole and on the disk.
void Save(const Salvage& salvage, const std::string& file)
{
    const std::string draft = file + ".recovering";
    for (const char* part : kParts)
        std::remove((draft + part).c_str());
    {
        StoreConnection store(draft, StoreConnection::Use::kWrite);
        salvage.Write(store);
    } // closing brings the log into the file
    Rename(draft, Saved(file));
    SyncFolder(std::filesystem::path(file).parent_path());
}

std::string Recover(const std::string& file)
{
    if (!Exists(file) && !Exists(file + "-wal"))
        return "there is no profile store in " + std::filesystem::path(file).parent_path().string() +
               " yet, so there is nothing to recover";
    if (!IsDamaged(file))
        return "the profile store " + file + " is sound; nothing was changed";
    const Salvage salvage{StorePages(file)};
    const std::string kept = DamagedName(file);
    Save(salvage, file);
    FinishRecovery(file);
    return "the profile store " + file + " was damaged; " + salvage.Report() +
           "; the damaged file is kept as " + kept;
}
} // namespace

void FinishRecovery(const std::string& file)
{
    if (!Exists(Saved(file)))
        return;
    const std::string damaged = DamagedName(file);
    for (const char* part : kParts)
        if (Exists(file + part))
            Rename(file + part, damaged + part);
    Rename(Saved(file), file);
    SyncFolder(std::filesystem::path(file).parent_path());
}

std::string RecoverDatabase(const std::string& file)
{
    FinishRecovery(file);
    errno = 0;
    try
    {
        return Recover(file);
    }
    catch (const SQLite::Exception& error)
    {
        const std::string folder = std::filesystem::path(file).parent_path();
        throw AnalyticsFault(ExplainStoreFault(error.getErrorCode(), errno, folder, error.what()).sentence);
    }
}

std::string RecoverStore()
{
    StateFolder folder(CurrentConfiguration().stateFolder);
    folder.Take();
    return RecoverDatabase(DatabaseIn(folder.Path()));
}

} // namespace analytics::platform
