#include "DesktopPlatform/Storage/DefaultsFile.hpp"

#include "DesktopPlatform/Foundation/AtomicFile.hpp"
#include "DesktopPlatform/Foundation/Descriptor.hpp"
#include "DesktopPlatform/Storage/SetAside.hpp"

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t applicationIdentifier = 0x43565544; // "CVUD"
constexpr std::int64_t formatVersion = 1;
constexpr const char* anyWrite = "PRAGMA application_id = 0x43565544"; // says nothing new

// The write-ahead mode comes last: what is made before it is all in the one file. Nothing here waits for the
// disk, for there is nothing to lose yet.
constexpr const char* beginning = "PRAGMA journal_mode = MEMORY;"
                                  "PRAGMA synchronous = OFF;"
                                  "BEGIN;"
                                  "CREATE TABLE defaults (key BLOB PRIMARY KEY NOT NULL, value ANY NOT NULL)"
                                  " STRICT, WITHOUT ROWID;"
                                  "PRAGMA application_id = 0x43565544;"
                                  "PRAGMA user_version = 1;"
                                  "COMMIT;"
                                  "PRAGMA journal_mode = WAL";

constexpr std::chrono::seconds longestWait{5};
constexpr std::chrono::milliseconds askAgain{2};

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

[[noreturn]] void cannotOpen(const char* why) { throw SqliteError(SQLITE_CANTOPEN, why); }

// While it is open, no other process begins a file in the folder or sets one aside.
Descriptor lockedFolder(const fs::path& folder) {
    Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock) cannotOpen("the folder cannot be opened");
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (::flock(lock.value(), LOCK_EX | LOCK_NB) != 0) {
        if (std::chrono::steady_clock::now() > end) cannotOpen("another process holds the folder's lock");
        std::this_thread::sleep_for(askAgain);
    }
    return lock;
}

// Complete under another name first: nobody ever opens a file that is only half begun.
void begin(const fs::path& file) {
    auto unfinished = file;
    unfinished += ".new";
    ::unlink(unfinished.c_str());
    if (!Descriptor(::open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)))
        cannotOpen("no file can be made in the folder");
    SqliteDatabase(unfinished, SqliteDatabase::Missing::fails).execute(beginning);
    if (::rename(unfinished.c_str(), file.c_str()) != 0) cannotOpen("the new file cannot be named");
}

std::optional<fs::path> setAsideWithLog(const fs::path& file) { return setAside(file, {"-wal", "-shm"}); }

// Null when there is a file that can never be used; what may pass is thrown.
std::unique_ptr<DefaultsFile> openUsable(const fs::path& file, std::string& reason) {
    try {
        return std::make_unique<DefaultsFile>(file);
    } catch (const SqliteError& error) {
        if (!isUnusable(file, error)) throw;
        reason = error.what();
        return nullptr;
    }
}

// Reads the whole file: damage is found before anything is built upon it.
SqliteDatabase& checked(SqliteDatabase& database, const fs::path& file) {
    std::error_code error;
    if (fs::file_size(file, error) == 0) // of which SQLite would delete the log
        throw SqliteError(SQLITE_NOTADB, "it is empty");
    if (database.integer("PRAGMA application_id") != applicationIdentifier)
        throw SqliteError(SQLITE_NOTADB, "it holds no user defaults");
    if (database.integer("PRAGMA user_version") > formatVersion)
        throw SqliteError(SQLITE_MISMATCH, "a later version of Corvantile has written it"); // and may be back
    const auto check = database.prepare("PRAGMA quick_check(1)");
    if (auto run = check.run(); !run.next() || run.bytes(0) != "ok")
        throw SqliteError(SQLITE_CORRUPT, "it is damaged");
    database.execute("PRAGMA synchronous = NORMAL");
    database.keepLog();
    return database;
}

// A connection that knows of the log, as it does only after it has read.
void read(SqliteDatabase& database) { static_cast<void>(database.integer("PRAGMA user_version")); }

} // namespace

DefaultsFile::Opened DefaultsFile::openOrBegin(const fs::path& file) {
    Opened opened;
    if (isTaken(file) && (opened.file = openUsable(file, opened.reason))) return opened;

    if (!makePrivateFolder(file.parent_path())) cannotOpen("the folder cannot be made");
    const auto lock = lockedFolder(file.parent_path());
    if (isTaken(file)) { // perhaps a good one, now that it is our turn
        if ((opened.file = openUsable(file, opened.reason))) return opened;
        opened.setAside = setAsideWithLog(file);
        if (!opened.setAside) cannotOpen("the damaged file cannot be renamed");
    } else {
        // A log without its file: SQLite would take it for the new one's.
        static_cast<void>(setAsideWithLog(file));
    }
    begin(file);
    opened.file = std::make_unique<DefaultsFile>(file);
    opened.file->beginLog();
    return opened;
}

DefaultsFile::DefaultsFile(const fs::path& file)
    : database_(file, SqliteDatabase::Missing::fails),
      select_(
          checked(database_, file).prepare("SELECT key, value, typeof(value) FROM defaults ORDER BY key")),
      setText_(database_.prepare("INSERT INTO defaults VALUES (?1, ?2)"
                                 " ON CONFLICT (key) DO UPDATE SET value = excluded.value")),
      setBoolean_(database_.prepare("INSERT INTO defaults VALUES (?1, ?2 = x'31')"
                                    " ON CONFLICT (key) DO UPDATE SET value = excluded.value")),
      remove_(database_.prepare("DELETE FROM defaults WHERE key = ?1")),
      version_(database_.prepare("PRAGMA data_version")) {}

NSUserDefaults::Dictionary DefaultsFile::load() {
    // Asked for before the rows: what is written in between is read now and once more later.
    loadedVersion_ = version();
    NSUserDefaults::Dictionary values;
    auto rows = select_.run();
    while (rows.next()) {
        const auto type = rows.bytes(2);
        const auto value = rows.bytes(1);
        if (type == "integer")
            values.emplace_hint(values.end(), rows.bytes(0), value != "0");
        else if (type == "blob" || type == "text")
            values.emplace_hint(values.end(), rows.bytes(0), std::string(value));
        // Anything else only a later version can have written: it is left alone.
    }
    return values;
}

void DefaultsFile::write(std::string_view key, const Change& change) {
    if (!change)
        remove_.run({key}).next();
    else if (const auto* const text = std::get_if<std::string>(&*change))
        setText_.run({key, *text}).next();
    else
        setBoolean_.run({key, std::get<bool>(*change) ? "1" : "0"}).next();
}

void DefaultsFile::write(const Changes& changes) {
    database_.execute("BEGIN IMMEDIATE");
    try {
        for (const auto& [key, change] : changes) write(key, change);
        database_.execute("COMMIT");
    } catch (const SqliteError&) {
        rollBack();
        throw;
    }
}

// The first write to a new log would wait for the disk, lest power loss mixes it up with what the log held
// before; but there is nothing before.
void DefaultsFile::beginLog() {
    database_.execute("PRAGMA synchronous = OFF");
    database_.execute(anyWrite);
    database_.execute("PRAGMA synchronous = NORMAL");
}

void DefaultsFile::rollBack() {
    try {
        database_.execute("ROLLBACK");
    } catch (const SqliteError&) {
        // Some failures have rolled back already.
    }
}

std::int64_t DefaultsFile::version() {
    auto run = version_.run();
    return run.next() ? run.integer(0) : 0;
}

bool DefaultsFile::hasChangedElsewhere() { return version() != loadedVersion_; }

void DefaultsFile::emptyLog(const fs::path& file) {
    SqliteDatabase database(file, SqliteDatabase::Missing::fails);
    database.execute("PRAGMA synchronous = NORMAL");
    read(database);
    // The first write to an emptied log waits for the disk: it had better be this one than somebody's next
    // set.
    if (database.emptyLog()) database.execute(anyWrite);
}

void DefaultsFile::flush(const fs::path& file) {
    SqliteDatabase database(file, SqliteDatabase::Missing::fails);
    read(database);
    database.flush();
}

} // namespace corvantile
