#include "store/StoreFiles.h"

#include <analytics/Faults.h>
#include <analytics/Platform.h>

#include "files/File.h"
#include "files/StandardError.h"
#include "store/StoreConnection.h"

#include <SQLiteCpp/Backup.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <system_error>

namespace analytics::platform
{
namespace
{
constexpr std::chrono::hours kBetweenCopies{1};

// What belongs to a database file, by what its name adds; the file itself comes last, so that it goes
// only when the others have gone.
constexpr const char* kParts[] = {"-journal", "-shm", "-wal", ""};

bool Exists(const std::string& path) { return StampOf(path).error == 0; }
std::string Reason() { return std::generic_category().message(errno); }

// Files that were made or renamed in it are so after a power cut only once the folder is on the disk.
void SyncFolder(const std::string& folder)
{
    const FileHandle handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (handle)
        fsync(handle.Get());
}

void MakeFolder(const std::filesystem::path& folder, mode_t mode)
{
    std::error_code error;
    if (std::filesystem::is_directory(folder, error))
        return;
    if (std::filesystem::exists(folder, error))
        throw AnalyticsFault("The state folder " + folder.string() +
                             " can't be used: it isn't a folder; choose another state folder");
    const std::filesystem::path parent = folder.has_parent_path() ? folder.parent_path() : ".";
    MakeFolder(parent, 0755);
    if (mkdir(folder.c_str(), mode) != 0 && errno != EEXIST)
        throw AnalyticsFault(
            "The state folder " + folder.string() + " can't be made: " + Reason() +
            "; make the folder above it writable for the service, or choose another state folder");
    SyncFolder(parent);
}
// Gives a file to the owner of its folder, where this process may: an administrator's command must leave
// nothing that the service can't open.
void GiveToOwner(const std::string& file)
{
    struct stat folder = {};
    if (geteuid() == 0 && stat(FolderOf(file).c_str(), &folder) == 0 &&
        chown(file.c_str(), folder.st_uid, folder.st_gid) != 0)
        throw AnalyticsFault("The owner of " + file + " can't be set: " + Reason());
}

std::string Count(int number, const std::string& word)
{
    return std::to_string(number) + " " + word + (number == 1 ? "" : "s");
}

// What takes the place of a database, complete and not there yet, and what the database is called then. A
// file of another name may be anything that was cut off.
struct Replacement
{
    const char* incoming;
    const char* kept; // and a number
};
constexpr Replacement kRecovered = {".recovered", ".damaged-"};
constexpr Replacement kRestored = {".restored", ".replaced-"};

void Rename(const std::string& from, const std::string& to)
{
    if (std::rename(from.c_str(), to.c_str()) != 0)
        throw AnalyticsFault("The file " + from + " can't be renamed to " + to + ": " + Reason() +
                             "; make the folder writable and try again");
}

// Damage is a matter of what was read, or of the disk that doesn't read.
bool MeansDamage(int code)
{
    return (code & kPrimaryCode) == SQLITE_CORRUPT || code == SQLITE_NOTADB || code == SQLITE_IOERR_READ ||
           code == SQLITE_IOERR_SHORT_READ;
}

// AnalyticsFault unless it is a file that this process may read; with `missing` if there is none.
void RequireReadable(const std::string& file, const std::string& missing)
{
    if (access(file.c_str(), R_OK) == 0)
    {
        if (!std::filesystem::is_regular_file(file))
            throw AnalyticsFault("The file " + file +
                                 " can't be read: it isn't a regular file; check its path");
        return;
    }
    const int error = errno;
    if (error == ENOENT || error == ENOTDIR)
        throw AnalyticsFault(missing);
    throw AnalyticsFault(
        "The file " + file + " can't be read: " + Reason() +
        (error == EACCES ? "; run this with sudo or as the service's user" : "; check its path"));
}

bool MeansNotWritten(int code)
{
    return (code & kPrimaryCode) == SQLITE_FULL || code == SQLITE_IOERR_WRITE || code == SQLITE_IOERR_FSYNC ||
           code == SQLITE_IOERR_TRUNCATE;
}

// Runs `action`, which reads the database `read` and writes `written`, maybe the same; what SQLite reports
// comes as a sentence on one of them.
template <class Action>
auto Explained(const std::string& read, const std::string& written, const Action& action)
{
    errno = 0;
    try
    {
        return action();
    }
    catch (const SQLite::Exception& error)
    {
        if (MeansDamage(error.getErrorCode()) || (error.getErrorCode() & kPrimaryCode) == SQLITE_ERROR)
            throw AnalyticsFault(
                "The file " + read +
                " is damaged or isn't a profile store; give --restore a copy that --backup has made");
        const std::string& failed = MeansNotWritten(error.getErrorCode()) ? written : read;
        // Once a file is open, its closing has changed errno since.
        const int systemError = (error.getErrorCode() & kPrimaryCode) == SQLITE_CANTOPEN ? errno : 0;
        throw AnalyticsFault(
            ExplainStoreFault(error.getErrorCode(), systemError, FolderOf(failed), error.what()).sentence);
    }
}

std::string ContentOf(SQLite::Database& database)
{
    return Count(database.execAndGet("SELECT count(*) FROM profile").getInt(), "profile") + " and " +
           Count(database.execAndGet("SELECT count(*) FROM configuration").getInt(), "configuration");
}

// Whether a copy may take the place of a file.
enum class Over
{
    Nothing, // and other copies may be made to the same name meanwhile
    Existing
};

// An empty file for its owner alone, beside `to`. What was cut off before goes, except with a name of its
// own.
std::string MakeDraft(const std::string& to, Over over)
{
    std::string draft = to + ".part";
    if (over == Over::Existing)
        std::remove(draft.c_str());
    else
        draft += "-XXXXXX";
    const FileHandle file(over == Over::Existing
                              ? open(draft.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600)
                              : mkostemp(draft.data(), O_CLOEXEC));
    if (!file)
        throw AnalyticsFault("The file " + to + " can't be made: " + Reason() +
                             "; choose a folder that is there and can be written");
    return draft;
}

// Makes `draft` a checked copy of the database `from`, in one file without a log. Returns what it holds.
std::string CopyInto(const std::string& draft, const std::string& from)
{
    return Explained(from, draft,
                     [&]
                     {
                         // Reads only, and so doesn't bring the log of a store in use into its file.
                         SQLite::Database source(from, SQLite::OPEN_READONLY, 5000);
                         SQLite::Database copy(draft, SQLite::OPEN_READWRITE, 5000);
                         SQLite::Backup backup(copy, source);
                         // It returns the code while another program holds the store locked.
                         if (const int code = backup.executeStep(-1); code != SQLITE_DONE)
                             throw SQLite::Exception("not copied", code);
                         copy.exec("PRAGMA journal_mode = DELETE");
                         RequireSound(copy);
                         return ContentOf(copy);
                     });
}

// Gives the draft its name. To do so over nothing, NFS has link() alone, and FAT has no link().
void Name(const std::string& draft, const std::string& to, Over over)
{
    if (over == Over::Existing)
        return Rename(draft, to);
    if (renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return;
    if (errno == EINVAL && link(draft.c_str(), to.c_str()) == 0)
    {
        std::remove(draft.c_str());
        return;
    }
    throw AnalyticsFault(errno == EEXIST
                             ? "The file " + to + " exists; choose a name that is free"
                             : "The file " + to + " can't be made: " + Reason() + "; choose another folder");
}

// Makes `to` such a copy; returns what it holds. Nothing is left behind if it fails.
std::string Copy(const std::string& from, const std::string& to, Over over)
{
    const std::string draft = MakeDraft(to, over);
    try
    {
        const std::string content = CopyInto(draft, from);
        GiveToOwner(draft);
        Name(draft, to, over);
        SyncFolder(FolderOf(to));
        return content;
    }
    catch (...)
    {
        std::remove(draft.c_str());
        throw;
    }
}

// Where the files go that are replaced: the first number that none of them has.
std::string KeptName(const std::string& database, const std::string& kept)
{
    for (int number = 1;; ++number)
    {
        const std::string name = database + kept + std::to_string(number);
        bool free = !Exists(name);
        for (const char* part : kParts)
            free = free && !(Exists(name + part) && Exists(database + part));
        if (free)
            return name;
    }
}

void Finish(const std::string& database, const Replacement& replacement)
{
    if (!Exists(database + replacement.incoming))
        return;
    const std::string kept = KeptName(database, replacement.kept);
    for (const char* part : kParts)
        if (Exists(database + part))
            Rename(database + part, kept + part);
    Rename(database + replacement.incoming, database);
    SyncFolder(FolderOf(database));
}

// Puts a copy of `from` in the place of the database; returns what it holds and where the old one went.
std::string Replace(const std::string& database, const std::string& from, const Replacement& replacement)
{
    const std::string kept = KeptName(database, replacement.kept);
    const std::string content = Copy(from, database + replacement.incoming, Over::Existing);
    Finish(database, replacement);
    return content + (Exists(kept) ? "; what was there is kept as " + kept : "");
}

bool IsDamaged(const std::string& database)
{
    try
    {
        const StoreConnection connection(database, StoreConnection::Use::Write);
        return false;
    }
    catch (const SQLite::Exception& error)
    {
        if (MeansDamage(error.getErrorCode()))
            return true;
        throw;
    }
}

std::string AgeOf(const std::string& file)
{
    const std::int64_t seconds = std::time(nullptr) - StampOf(file).modified / 1'000'000'000;
    if (seconds < 120)
        return Count(static_cast<int>(seconds), "second");
    if (seconds < 2 * 3600)
        return Count(static_cast<int>(seconds / 60), "minute");
    if (seconds < 2 * 86400)
        return Count(static_cast<int>(seconds / 3600), "hour");
    return Count(static_cast<int>(seconds / 86400), "day");
}

} // namespace

void StateFolder::Take()
{
    std::filesystem::path folder(m_path);
    MakeFolder(folder.has_filename() ? folder : folder.parent_path(), 0700);
    const std::string path = m_path + "/lock";
    if (IsAt(m_lock.Get(), path))
        return;
    FileHandle lock(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock)
        throw AnalyticsFault("The state folder " + m_path + " can't be used: " + Reason() +
                             "; it has to be a folder in which the service may write");
    GiveToOwner(path);
    if (flock(lock.Get(), LOCK_EX | LOCK_NB) != 0)
        throw AnalyticsFault(
            "The state folder " + m_path +
            " is in use by another process; end that process, or choose another state folder");
    m_lock = std::move(lock);
}

void FinishReplacement(const std::string& database)
{
    for (const Replacement& replacement : {kRecovered, kRestored})
        Finish(database, replacement);
}

void KeepLastCopy(const std::string& database)
{
    const std::string copy = LastCopyOf(database);
    struct stat status = {};
    // With a second name it is kept already.
    if (Exists(database) || stat(copy.c_str(), &status) != 0 || status.st_nlink > 1)
        return;
    const std::string kept = KeptName(copy, "-");
    if (link(copy.c_str(), kept.c_str()) != 0)
        throw AnalyticsFault("The profile store " + database + " is missing, and its last good copy " + copy +
                             " can't be kept: " + Reason() +
                             "; put it back with --recover, or move it away to begin with an empty store");
    SyncFolder(FolderOf(database));
    Say("The profile store " + database + " is missing; its last good copy is kept as " + kept +
        ", which --restore puts back");
}

std::string BackUpStore(const std::string& folder, const std::string& file)
{
    const std::string database = DatabaseIn(folder);
    RequireReadable(database,
                    "There is no profile store in " + folder + "; name the service's folder with --state");
    return "saved " + Copy(database, file, Over::Nothing) + " to " + file;
}

std::string RestoreStore(const std::string& folder, const std::string& file)
{
    RequireReadable(file, "There is no file " + file + "; name a copy that --backup has made");
    StateFolder state(folder);
    state.Take();
    const std::string database = DatabaseIn(folder);
    FinishReplacement(database);
    return "restored " + Replace(database, file, kRestored);
}

std::string RecoverStore(const std::string& folder)
{
    StateFolder state(folder);
    state.Take();
    const std::string database = DatabaseIn(folder);
    FinishReplacement(database);
    const std::string copy = LastCopyOf(database);
    const bool missing = !Exists(database);
    if (missing && !Exists(database + "-wal") && !Exists(copy))
        return "there is no profile store in " + folder + " yet, so there is nothing to recover";
    if (!missing && !Explained(database, database, [&] { return IsDamaged(database); }))
        return "the profile store " + database + " is sound; nothing was changed";
    if (!Exists(copy))
        throw AnalyticsFault(
            "The profile store " + database +
            " is damaged, and there is no last good copy; restore a backup with --restore, or "
            "move the files away to begin with an empty store");
    const std::string age = AgeOf(copy);
    return "the profile store " + database + (missing ? " was missing" : " was damaged") +
           "; the last good copy, " + age + " old, is in its place and holds " +
           Replace(database, copy, kRecovered);
}

std::string StoreLibraryVersion() { return sqlite3_libversion(); }

LastGoodCopy::LastGoodCopy(const std::string& database)
    : m_database(database), m_leaveAlone(StampOf(database).size == 0 && Exists(LastCopyOf(database)))
{
}

void LastGoodCopy::AfterStart()
{
    if (!m_leaveAlone)
        Make();
}

void LastGoodCopy::AfterChange()
{
    const auto now = std::chrono::steady_clock::now();
    auto next = m_next.load();
    if (now >= next && m_next.compare_exchange_strong(next, now + kBetweenCopies))
        Make();
}

void LastGoodCopy::Make()
{
    try
    {
        Copy(m_database, LastCopyOf(m_database), Over::Existing);
    }
    catch (const std::exception& error)
    {
        Say("The last good copy of the profile store can't be made: " + std::string(error.what()));
    }
}

} // namespace analytics::platform
