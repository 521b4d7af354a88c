#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"

#include <sqlite3.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void cannotOpen(const char* why) { throw SqliteError(SQLITE_CANTOPEN, why); }

[[noreturn]] void isOfAnotherKind(const StateFormat& format) {
    throw SqliteError(SQLITE_NOTADB, std::string("it holds no ") + format.content);
}

bool isTaken(const fs::path& file) {
    std::error_code error;
    return fs::symlink_status(file, error).type() != fs::file_type::not_found;
}

bool canBeRead(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && ::access(file.c_str(), R_OK) == 0;
}

// Rather than that the disk is full, or the process out of descriptors.
bool isUnusable(const fs::path& file, const StateFormat& format, const SqliteError& error) {
    const bool isReplaceable = !format.isDurable && error.code() == SQLITE_CANTOPEN;
    return error.isUnreadable() || (isReplaceable && !canBeRead(file));
}

// While it is open, no other process begins a file in the folder or moves one aside.
Descriptor lockedFolder(const fs::path& folder) {
    Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock) cannotOpen("the folder cannot be opened");
    const int error = lockFile(lock);
    if (error == EWOULDBLOCK) throw SqliteError(SQLITE_BUSY, "another process holds the folder's lock");
    if (error != 0) cannotOpen("the folder cannot be locked");
    return lock;
}

std::string mark(const StateFormat& format) {
    return "PRAGMA application_id = " + std::to_string(format.applicationIdentifier) + ";";
}

fs::path unfinishedName(fs::path file) { return file += ".new"; }

// Complete under another name first: no process ever opens a file that is only half begun. The write-ahead
// mode comes last: what is made before it is all in the one file. A file that need not survive a power loss
// waits for no disk, for there is nothing to lose yet.
void begin(const fs::path& file, const StateFormat& format, const FillState& fill) {
    const auto unfinished = unfinishedName(file);
    ::unlink(unfinished.c_str());
    if (!Descriptor(::open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)))
        cannotOpen("no file can be made in the folder");
    SqliteDatabase database(unfinished, SqliteDatabase::Missing::fails);
    database.execute("PRAGMA journal_mode = MEMORY");
    database.execute(format.isDurable ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = OFF");
    database.transact([&] {
        database.execute(format.tables);
        database.execute((mark(format) + "PRAGMA user_version = " + std::to_string(format.version)).c_str());
        if (fill) fill(database);
    });
    database.execute("PRAGMA journal_mode = WAL");
}

void nameBegun(const fs::path& file, const StateFormat& format) {
    if (::rename(unfinishedName(file).c_str(), file.c_str()) != 0) cannotOpen("the new file cannot be named");
    if (format.isDurable) syncFolder(file.parent_path());
}

// The first write to a new log would wait for the disk, lest power loss mixes it up with what the log held
// before; but there is nothing before.
void beginLog(SqliteDatabase& database, const StateFormat& format) {
    if (format.isDurable) return;
    database.execute(("PRAGMA synchronous = OFF;" + mark(format) + "PRAGMA synchronous = NORMAL").c_str());
}

// False, with the reason, when there is a file that can never be used; what may pass is thrown.
bool openUsable(const fs::path& file, const StateFormat& format, OpenedState& opened, std::string& reason) {
    try {
        opened.database = openState(file, format);
        return true;
    } catch (const SqliteError& error) {
        if (!isUnusable(file, format, error)) throw;
        reason = error.what();
        return false;
    }
}

} // namespace

OpenedState openOrBeginState(const fs::path& file, const StateFormat& format, const FillState& fill) {
    OpenedState opened;
    std::string reason;
    if (isTaken(file) && openUsable(file, format, opened, reason)) return opened;

    if (!makePrivateFolder(file.parent_path())) cannotOpen("the folder cannot be made");
    const auto lock = lockedFolder(file.parent_path());
    const bool isReplaced = isTaken(file); // perhaps by a good one, now that it is our turn
    if (isReplaced && openUsable(file, format, opened, reason)) return opened;

    begin(file, format, isReplaced ? fill : nullptr);
    // A log without its file goes as well: SQLite would take it for the new one's.
    opened.setAside = quarantine(file, {"-journal", "-wal", "-shm"});
    if (isReplaced && !opened.setAside) cannotOpen("the damaged file cannot be renamed");
    if (isReplaced)
        opened.loss = file.string() + " cannot be used (" + reason + ") and was set aside as " +
                      opened.setAside->filename().string() + ".";
    nameBegun(file, format);
    opened.database = openState(file, format);
    beginLog(*opened.database, format);
    return opened;
}

std::unique_ptr<SqliteDatabase> openUncheckedState(const fs::path& file, const StateFormat& format) {
    auto database = std::make_unique<SqliteDatabase>(file, SqliteDatabase::Missing::fails);
    std::error_code error;
    if (fs::file_size(file, error) == 0) // of which SQLite would delete the log
        throw SqliteError(SQLITE_NOTADB, "it is empty");
    if (database->integer("PRAGMA application_id") != format.applicationIdentifier) isOfAnotherKind(format);
    if (database->integer("PRAGMA user_version") > format.version)
        throw SqliteError(SQLITE_MISMATCH, "a later version of Corvantile has written it"); // and may be back
    try {
        static_cast<void>(database->prepare(format.query));
    } catch (const SqliteError& failure) {
        if (failure.code() == SQLITE_ERROR) isOfAnotherKind(format);
        throw;
    }
    return database;
}

std::unique_ptr<SqliteDatabase> openState(const fs::path& file, const StateFormat& format) {
    auto database = openUncheckedState(file, format);
    {
        const auto check = database->prepare("PRAGMA quick_check(1)");
        if (auto run = check.run(); !run.next() || run.bytes(0) != "ok")
            throw SqliteError(SQLITE_CORRUPT, "it is damaged");
    }
    database->execute(format.isDurable ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
    database->keepLog();
    return database;
}

void emptyStateLog(const fs::path& file, const StateFormat& format) try {
    SqliteDatabase database(file, SqliteDatabase::Missing::fails);
    database.execute("PRAGMA synchronous = NORMAL");
    // The first write to an emptied log waits for the disk. This one does, so that no save has to.
    if (database.emptyLog()) database.execute(mark(format).c_str());
} catch (const SqliteError&) {
    // The log stays long, and a later write that makes it longer tries again.
}

LogTrimmer::LogTrimmer(fs::path file, const StateFormat& format, int longLog, BackgroundRunner inBackground)
    : file_(std::move(file)),
      format_(format),
      longLog_(longLog),
      inBackground_(std::move(inBackground)),
      nextEmptying_(longLog) {}

void LogTrimmer::noteWrite(int pages) {
    if (pages < longLog_) nextEmptying_ = longLog_; // it was emptied meanwhile
    if (pages < nextEmptying_) return;
    nextEmptying_ = pages + longLog_;
    auto empty = [file = file_, &format = format_] { emptyStateLog(file, format); };
    if (inBackground_)
        inBackground_(std::move(empty));
    else
        empty();
}

} // namespace corvantile
