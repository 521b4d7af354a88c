#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"

#include <sqlite3.h>

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void cannotOpen(const char* why) { throw SqliteError(SQLITE_CANTOPEN, why); }

bool isTaken(const fs::path& file) {
    std::error_code error;
    return fs::symlink_status(file, error).type() != fs::file_type::not_found;
}

bool canBeRead(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && ::access(file.c_str(), R_OK) == 0;
}

// Rather than that the disk is full, or the process out of descriptors.
bool isUnusable(const fs::path& file, const SqliteError& error) {
    return error.isUnreadable() || (error.code() == SQLITE_CANTOPEN && !canBeRead(file));
}

// While it is open, no other process begins a file in the folder or sets one aside.
Descriptor lockedFolder(const fs::path& folder) {
    Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock) cannotOpen("the folder cannot be opened");
    if (const int error = lockFile(lock); error != 0)
        cannotOpen(error == EWOULDBLOCK ? "another process holds the folder's lock"
                                        : "the folder cannot be locked");
    return lock;
}

std::string mark(const StateFormat& format) {
    return "PRAGMA application_id = " + std::to_string(format.applicationIdentifier) + ";";
}

// The write-ahead mode comes last: what is made before it is all in the one file. Nothing here waits for the
// disk, for there is nothing to lose yet.
std::string beginning(const StateFormat& format) {
    return std::string("PRAGMA journal_mode = MEMORY; PRAGMA synchronous = OFF; BEGIN;") + format.tables +
           ";" + mark(format) + "PRAGMA user_version = " + std::to_string(format.version) +
           "; COMMIT; PRAGMA journal_mode = WAL";
}

// Complete under another name first: nobody ever opens a file that is only half begun.
void begin(const fs::path& file, const StateFormat& format) {
    auto unfinished = file;
    unfinished += ".new";
    ::unlink(unfinished.c_str());
    if (!Descriptor(::open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)))
        cannotOpen("no file can be made in the folder");
    SqliteDatabase(unfinished, SqliteDatabase::Missing::fails).execute(beginning(format).c_str());
    if (::rename(unfinished.c_str(), file.c_str()) != 0) cannotOpen("the new file cannot be named");
}

// The first write to a new log would wait for the disk, lest power loss mixes it up with what the log held
// before; but there is nothing before.
void beginLog(SqliteDatabase& database, const StateFormat& format) {
    database.execute(("PRAGMA synchronous = OFF;" + mark(format) + "PRAGMA synchronous = NORMAL").c_str());
}

std::optional<fs::path> quarantineWithLog(const fs::path& file) { return quarantine(file, {"-wal", "-shm"}); }

// False when there is a file that can never be used; what may pass is thrown.
bool openUsable(const fs::path& file, const StateFormat& format, OpenedState& opened) {
    try {
        opened.database = openState(file, format);
        return true;
    } catch (const SqliteError& error) {
        if (!isUnusable(file, error)) throw;
        opened.reason = error.what();
        return false;
    }
}

} // namespace

OpenedState openOrBeginState(const fs::path& file, const StateFormat& format) {
    OpenedState opened;
    if (isTaken(file) && openUsable(file, format, opened)) return opened;

    if (!makePrivateFolder(file.parent_path())) cannotOpen("the folder cannot be made");
    const auto lock = lockedFolder(file.parent_path());
    if (isTaken(file)) { // perhaps a good one, now that it is our turn
        if (openUsable(file, format, opened)) return opened;
        opened.setAside = quarantineWithLog(file);
        if (!opened.setAside) cannotOpen("the damaged file cannot be renamed");
    } else {
        // A log without its file: SQLite would take it for the new one's.
        static_cast<void>(quarantineWithLog(file));
    }
    begin(file, format);
    opened.database = openState(file, format);
    beginLog(*opened.database, format);
    return opened;
}

std::unique_ptr<SqliteDatabase> openState(const fs::path& file, const StateFormat& format) {
    auto database = std::make_unique<SqliteDatabase>(file, SqliteDatabase::Missing::fails);
    std::error_code error;
    if (fs::file_size(file, error) == 0) // of which SQLite would delete the log
        throw SqliteError(SQLITE_NOTADB, "it is empty");
    if (database->integer("PRAGMA application_id") != format.applicationIdentifier)
        throw SqliteError(SQLITE_NOTADB, std::string("it holds no ") + format.content);
    if (database->integer("PRAGMA user_version") > format.version)
        throw SqliteError(SQLITE_MISMATCH, "a later version of Corvantile has written it"); // and may be back
    {
        const auto check = database->prepare("PRAGMA quick_check(1)");
        if (auto run = check.run(); !run.next() || run.bytes(0) != "ok")
            throw SqliteError(SQLITE_CORRUPT, "it is damaged");
    }
    database->execute("PRAGMA synchronous = NORMAL");
    database->keepLog();
    return database;
}

void emptyStateLog(const fs::path& file, const StateFormat& format) try {
    SqliteDatabase database(file, SqliteDatabase::Missing::fails);
    database.execute("PRAGMA synchronous = NORMAL");
    // The first write to an emptied log waits for the disk: it had better be this one than somebody's next.
    if (database.emptyLog()) database.execute(mark(format).c_str());
} catch (const SqliteError&) {
    // Whoever writes next watches the log still.
}

bool LogWatch::hasGrownLong(int pages) {
    if (pages < longLog_) nextEmptying_ = longLog_; // it was emptied meanwhile
    if (pages < nextEmptying_) return false;
    nextEmptying_ = pages + longLog_;
    return true;
}

} // namespace corvantile
