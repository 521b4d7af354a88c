#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantileDesktop/detail/Storage/WriteAheadLog.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>
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

bool isRegular(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error);
}

bool canBeRead(const fs::path& file) { return isRegular(file) && ::access(file.c_str(), R_OK) == 0; }

fs::path companion(fs::path file, std::string_view suffix) { return file += suffix; }

const std::initializer_list<std::string_view> companions = {"-journal", "-wal", "-shm"};

bool hasLog(const fs::path& file) {
    std::error_code error;
    const auto size = fs::file_size(companion(file, "-wal"), error);
    return !error && size > 0;
}

// What SQLite keeps beside a file and cannot use: a folder of that name, or a file without permissions. The
// log of a durable file may be readable again later.
std::vector<std::string_view> unusableCompanions(const fs::path& file, const StateFormat& format) {
    std::vector<std::string_view> found;
    for (const auto suffix : companions) {
        const auto name = companion(file, suffix);
        std::error_code error;
        const auto type = fs::status(name, error).type();
        if (type == fs::file_type::not_found) continue; // also when another process deletes it just now
        const bool isForbidden = ::access(name.c_str(), R_OK | W_OK) != 0 && errno == EACCES;
        if (type != fs::file_type::regular || (isForbidden && !(format.isDurable && suffix == "-wal")))
            found.push_back(suffix);
    }
    return found;
}

std::string nameOf(const fs::path& file) { return file.filename().string(); }

void moveAside(const fs::path& file, const std::vector<std::string_view>& suffixes,
               std::vector<std::string>& reports) {
    for (const auto suffix : suffixes) {
        const auto name = companion(file, suffix);
        const auto kept = quarantine(name);
        if (!kept) cannotOpen("what is in the place of its log or index cannot be renamed");
        reports.push_back(name.string() + " cannot be used and was set aside as " + nameOf(*kept) + ".");
    }
}

// SQLite reads the log up to the damage and writes over the rest, which is kept for a person to look at.
void keepCutOffLog(const fs::path& file, std::vector<std::string>& reports) {
    const auto bytes = SqliteDatabase::bytesOf(file);
    const auto log = readFile(companion(file, "-wal"));
    const auto name = nextQuarantineName(file, companions);
    const bool isKept =
        bytes && log && replaceFile(name, *bytes) && replaceFile(companion(name, "-wal"), *log);
    reports.push_back(companion(file, "-wal").string() + " is damaged: what was written last is lost. " +
                      (isKept ? "A copy was kept as " + nameOf(name) + "." : "No copy could be kept."));
}

// Rather than that the disk is full, or the process out of descriptors.
bool isUnusable(const fs::path& file, const StateFormat& format, const SqliteError& error) {
    const bool isReplaceable = !format.isDurable && error.code() == SQLITE_CANTOPEN;
    return error.isUnreadable() || (isReplaceable && !canBeRead(file));
}

// A burst makes it so long, not the ordinary life of an app: 4 MB or twice what is long.
int longestLog(const StateFormat& format) { return std::max(1000, 2 * format.longLog); }

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

void emptyLogOf(SqliteDatabase& database, const StateFormat& format) {
    // The first write to an emptied log waits for the disk. This one does, so that no save has to.
    if (database.emptyLog()) database.execute(mark(format).c_str());
}

fs::path unfinishedName(fs::path file) { return file += ".new"; }

// Complete under another name first: no process ever opens a file that is only half begun. The write-ahead
// mode comes last: what is made before it is all in the one file. A file that need not survive a power loss
// waits for no disk, for there is nothing to lose yet.
void begin(const fs::path& file, const StateFormat& format, const FillState& fill) {
    const auto unfinished = unfinishedName(file);
    for (const auto suffix : companions) ::unlink(companion(unfinished, suffix).c_str());
    if (::unlink(unfinished.c_str()) != 0 && errno != ENOENT) quarantine(unfinished); // it is a folder
    if (!Descriptor(::open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)))
        cannotOpen("no file can be made in the folder");
    SqliteDatabase database(unfinished, SqliteDatabase::Missing::fails);
    database.setEmptiesLogAtEnd(true); // no file stays beside it
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

// The write-ahead mode, which comes last, is in the file's header.
bool isComplete(const fs::path& begun) {
    constexpr std::size_t modePlace = 18;
    const auto bytes = SqliteDatabase::bytesOf(begun);
    return bytes && bytes->size() > modePlace + 2 && bytes->substr(modePlace, 2) == "\2\2";
}

void requireRegular(const fs::path& file) {
    std::error_code error;
    if (fs::exists(file, error) && !fs::is_regular_file(file, error)) cannotOpen("it is no file");
    if (fs::file_size(file, error) == 0 && !error) // of which SQLite would delete the log
        throw SqliteError(SQLITE_NOTADB, "it is empty");
}

void requireFormat(SqliteDatabase& database, const StateFormat& format) {
    if (database.integer("PRAGMA application_id") != format.applicationIdentifier) isOfAnotherKind(format);
    if (database.integer("PRAGMA user_version") > format.version)
        throw SqliteError(SQLITE_MISMATCH, "a later version of Corvantile has written it"); // and may be back
    try {
        static_cast<void>(database.prepare(format.query));
    } catch (const SqliteError& failure) {
        if (failure.code() == SQLITE_ERROR) isOfAnotherKind(format);
        throw;
    }
}

void requireUndamaged(SqliteDatabase& database) {
    const auto check = database.prepare("PRAGMA quick_check(1)");
    if (auto run = check.run(); !run.next() || run.bytes(0) != "ok")
        throw SqliteError(SQLITE_CORRUPT, "it is damaged");
}

// Where there was no log. Another process may have begun one since, and be moving its pages just now.
void requireWhole(const SqliteDatabase& database, const fs::path& file) {
    if (database.isCutShort() && !hasLog(file) && database.isCutShort())
        throw SqliteError(SQLITE_CORRUPT, "it is cut short");
}

void prepareForWriting(SqliteDatabase& database, const StateFormat& format) {
    database.execute(format.isDurable ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
    database.keepLog(format.longLog);
}

// One attempt to open a file for writing.
struct Opening {
    const fs::path& file;
    const StateFormat& format;
    const bool isDoubtful;
    OpenedState opened = {};
    std::string reason = {}; // why the file can never be used

    // False when there is a file that can never be used; what may pass is thrown.
    bool open() {
        try {
            openUsable();
            return true;
        } catch (const SqliteError& error) {
            if (!isUnusable(file, format, error)) throw;
            reason = error.what();
            return false;
        }
    }

private:
    void openUsable() {
        const bool hadLog = hasLog(file);
        const bool isCutOff = hadLog && isLogCutOff(file);
        auto database = openUncheckedState(file, format);
        if (!hadLog) requireWhole(*database, file);
        if (isDoubtful || hadLog || format.isDurable) requireUndamaged(*database);
        prepareForWriting(*database, format);
        if (isCutOff) keepCutOffLog(file, opened.reports);
        if (isCutOff) database->cutLog(); // or what is behind the damage would be found again
        if (!hadLog && !format.isDurable) database->beginLogUnflushed();
        database->setEmptiesLogAtEnd(true);
        opened.database = std::move(database);
    }
};

// Gives a new file its name, and the one in its place another.
void replaceByBegun(const fs::path& file, const StateFormat& format, bool isReplaced, Opening& opening) {
    // A log without its file goes as well: SQLite would take it for the new one's.
    opening.opened.setAside = quarantine(file, companions);
    if (isReplaced && !opening.opened.setAside) cannotOpen("the damaged file cannot be renamed");
    nameBegun(file, format);
}

// For a process that was killed after it had moved the former file aside.
void nameLeftBehind(const fs::path& file, const StateFormat& format, Opening& opening) {
    opening.opened.setAside = finishQuarantine(file, companions);
    if (opening.opened.setAside) opening.reason = "it was damaged";
    nameBegun(file, format);
}

} // namespace

OpenedState openOrBeginState(const fs::path& file, const StateFormat& format, const FillState& fill,
                             bool isDoubtful) {
    Opening opening{file, format, isDoubtful};
    if (isTaken(file) && unusableCompanions(file, format).empty() && opening.open())
        return std::move(opening.opened);

    if (!makePrivateFolder(file.parent_path())) cannotOpen("the folder cannot be made");
    const auto lock = lockedFolder(file.parent_path());
    const bool isReplaced = isTaken(file); // perhaps by a good one, now that it is our turn
    if (isReplaced) moveAside(file, unusableCompanions(file, format), opening.opened.reports);
    if (isReplaced && opening.open()) return std::move(opening.opened);

    if (!isReplaced && isComplete(unfinishedName(file))) {
        nameLeftBehind(file, format, opening);
    } else {
        begin(file, format, isReplaced ? fill : nullptr);
        replaceByBegun(file, format, isReplaced, opening);
    }
    auto& [database, setAside, loss, reports] = opening.opened;
    if (!opening.reason.empty() && setAside)
        loss = file.string() + " cannot be used (" + opening.reason + ") and was set aside as " +
               nameOf(*setAside) + ".";
    if (!opening.open()) throw SqliteError(SQLITE_CORRUPT, opening.reason);
    return std::move(opening.opened);
}

std::unique_ptr<SqliteDatabase> openUncheckedState(const fs::path& file, const StateFormat& format) {
    requireRegular(file);
    auto database = std::make_unique<SqliteDatabase>(file, SqliteDatabase::Missing::fails);
    requireFormat(*database, format);
    return database;
}

std::unique_ptr<SqliteDatabase> openState(const fs::path& file, const StateFormat& format) {
    auto database = openUncheckedState(file, format);
    requireUndamaged(*database);
    prepareForWriting(*database, format);
    return database;
}

std::unique_ptr<SqliteDatabase> openStateImage(const fs::path& file, const StateFormat& format) {
    const bool isUnnamed = !isTaken(file) && isComplete(unfinishedName(file));
    const auto found = isUnnamed ? unfinishedName(file) : file;
    requireRegular(found);
    const auto image = databaseImage(found);
    if (!image) cannotOpen("it cannot be read");
    if (static_cast<std::int64_t>(image->size()) < SqliteDatabase::sizeByHeader(*image))
        throw SqliteError(SQLITE_CORRUPT, "it is cut short");
    auto database = std::make_unique<SqliteDatabase>(*image);
    requireFormat(*database, format);
    return database;
}

bool isInReadOnlyFolder(const fs::path& file) {
    return ::access(file.parent_path().c_str(), W_OK) != 0 && (errno == EACCES || errno == EROFS);
}

bool isStateMissing(const fs::path& file) { return !isTaken(file) && !isComplete(unfinishedName(file)); }

InspectedState inspectState(const fs::path& file, const StateFormat& format) {
    InspectedState inspected;
    try {
        inspected.database = openStateImage(file, format);
        requireUndamaged(*inspected.database);
    } catch (const SqliteError& error) {
        inspected.fault = error.what();
        return inspected;
    }
    if (const auto unusable = unusableCompanions(file, format); !unusable.empty())
        inspected.fault = nameOf(companion(file, unusable.front())) + " cannot be used";
    else if (isLogCutOff(file))
        inspected.fault = "its log is damaged: what was written last is lost";
    return inspected;
}

void emptyStateLog(const fs::path& file, const StateFormat& format) try {
    SqliteDatabase database(file, SqliteDatabase::Missing::fails);
    database.execute("PRAGMA synchronous = NORMAL");
    database.keepLog(format.longLog);
    emptyLogOf(database, format);
} catch (const SqliteError&) {
    // The log stays long, and a later write that makes it longer tries again.
}

LogTrimmer::LogTrimmer(fs::path file, const StateFormat& format, BackgroundRunner inBackground)
    : file_(std::move(file)),
      format_(format),
      inBackground_(std::move(inBackground)),
      nextEmptying_(format.longLog),
      nextOwnEmptying_(longestLog(format)) {}

void LogTrimmer::noteWrite(SqliteDatabase& database) try {
    database.noteCommit();
    const int pages = database.logPages();
    if (pages == 0) return;                                       // so far it has only read
    if (pages < format_.longLog) nextEmptying_ = format_.longLog; // it was emptied meanwhile
    if (pages < longestLog(format_)) nextOwnEmptying_ = longestLog(format_);
    if (pages >= nextOwnEmptying_) {
        nextOwnEmptying_ = pages + longestLog(format_); // where a reader has prevented it
        emptyLogOf(database, format_);
    } else if (pages >= nextEmptying_) {
        nextEmptying_ = pages + format_.longLog;
        emptyInBackground();
    } else if (!hasWritten_) {
        emptyInBackground();
    }
    hasWritten_ = true;
} catch (const SqliteError&) {
    // What was to be written has been written.
}

void LogTrimmer::emptyInBackground() {
    if (!inBackground_) return emptyStateLog(file_, format_);
    if (isPosted_->exchange(true)) return;
    inBackground_([file = file_, &format = format_, isPosted = isPosted_] {
        *isPosted = false;
        emptyStateLog(file, format);
    });
}

} // namespace corvantile
