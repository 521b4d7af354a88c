#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"

#include <sqlite3.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>
#include <vector>

namespace corvantile {

namespace {

// Long enough for a slow disk's flush; a process that was stopped inside a write holds others up no longer.
constexpr int busyMilliseconds = 5000;

constexpr std::size_t databaseHeaderSize = 100; // of a database file

sqlite3_stmt* prepared(sqlite3* database, std::string_view statement, unsigned flags, int& code) {
    sqlite3_stmt* made = nullptr;
    code = sqlite3_prepare_v3(database, statement.data(), static_cast<int>(statement.size()), flags, &made,
                              nullptr);
    return made;
}

} // namespace

SqliteError::SqliteError(int extendedCode, std::string message)
    : extendedCode_(extendedCode), message_(std::move(message)) {}

SqliteError::~SqliteError() = default;

bool SqliteError::isUnreadable() const { return code() == SQLITE_NOTADB || code() == SQLITE_CORRUPT; }

bool SqliteError::mayPass() const {
    return code() == SQLITE_FULL || code() == SQLITE_BUSY || extendedCode_ == SQLITE_IOERR_WRITE;
}

SqliteRun::~SqliteRun() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

bool SqliteRun::next() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    sqlite3* const database = sqlite3_db_handle(statement_);
    throw SqliteError(sqlite3_extended_errcode(database), sqlite3_errmsg(database));
}

std::string_view SqliteRun::bytes(int column) const {
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::int64_t SqliteRun::integer(int column) const { return sqlite3_column_int64(statement_, column); }

void SqliteStatement::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

SqliteRun SqliteStatement::run(std::initializer_list<std::string_view> blobs) const {
    int place = 0;
    for (const auto blob : blobs) {
        // A null pointer would bind NULL, which no key ever equals.
        const char* const bytes = blob.empty() ? "" : blob.data();
        sqlite3_bind_blob64(statement_.get(), ++place, bytes, blob.size(), SQLITE_STATIC);
    }
    return SqliteRun(statement_.get());
}

void SqliteDatabase::Close::operator()(sqlite3* database) const { sqlite3_close_v2(database); }

SqliteDatabase::SqliteDatabase(const std::filesystem::path& file, Missing missing) {
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (missing == Missing::isMade ? SQLITE_OPEN_CREATE : 0);
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &opened, flags, nullptr);
    database_.reset(opened);
    check(code);
    sqlite3_extended_result_codes(opened, 1);
    sqlite3_busy_timeout(opened, busyMilliseconds);
    setEmptiesLogAtEnd(false);
}

SqliteDatabase::SqliteDatabase(std::string_view image) {
    sqlite3* opened = nullptr;
    const int code =
        sqlite3_open_v2(":memory:", &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(opened);
    check(code);
    sqlite3_extended_result_codes(opened, 1);
    auto* const copy = static_cast<unsigned char*>(sqlite3_malloc64(image.size() + 1));
    if (copy == nullptr) fail(SQLITE_NOMEM);
    std::memcpy(copy, image.data(), image.size());
    const auto size = static_cast<sqlite3_int64>(image.size());
    check(sqlite3_deserialize(opened, "main", copy, size, size,
                              SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY));
}

SqliteDatabase::~SqliteDatabase() = default;

std::optional<std::string> SqliteDatabase::bytesOf(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) return std::nullopt;
    auto* const system = sqlite3_vfs_find(nullptr);
    const std::unique_ptr<const char, void (*)(const char*)> name(
        sqlite3_create_filename(std::filesystem::absolute(file, error).c_str(), "", "", 0, nullptr),
        [](const char* made) { sqlite3_free_filename(const_cast<char*>(made)); });
    std::vector<std::max_align_t> memory(
        static_cast<std::size_t>(system->szOsFile) / sizeof(std::max_align_t) + 1);
    auto* const opened = reinterpret_cast<sqlite3_file*>(memory.data());
    int code = system->xOpen(system, name.get(), opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, nullptr);
    sqlite3_int64 size = 0;
    std::string bytes;
    if (code == SQLITE_OK) code = opened->pMethods->xFileSize(opened, &size);
    if (size > std::numeric_limits<int>::max()) code = SQLITE_TOOBIG;
    if (code == SQLITE_OK) {
        bytes.resize(static_cast<std::size_t>(size));
        code = opened->pMethods->xRead(opened, bytes.data(), static_cast<int>(size), 0);
    }
    if (opened->pMethods != nullptr) opened->pMethods->xClose(opened);
    // A short read has filled the rest with zeros: the file has become shorter.
    if (code != SQLITE_OK && code != SQLITE_IOERR_SHORT_READ) return std::nullopt;
    return bytes;
}

std::int64_t SqliteDatabase::sizeByHeader(std::string_view bytes) {
    constexpr std::size_t pageSizePlace = 16, pageCountPlace = 28;
    constexpr std::int64_t longestPage = 65536; // whose two bytes say 1
    if (bytes.size() < databaseHeaderSize) return 0;
    const auto number = [&](std::size_t place, std::size_t size) {
        std::int64_t read = 0;
        for (const char byte : bytes.substr(place, size))
            read = read * 256 + static_cast<unsigned char>(byte);
        return read;
    };
    const auto pageSize = number(pageSizePlace, 2);
    return (pageSize == 1 ? longestPage : pageSize) * number(pageCountPlace, 4);
}

bool SqliteDatabase::isCutShort() const {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file));
    if (file == nullptr || file->pMethods == nullptr) return false; // in memory
    std::string header(databaseHeaderSize, '\0');
    sqlite3_int64 size = 0;
    if (file->pMethods->xRead(file, header.data(), static_cast<int>(header.size()), 0) != SQLITE_OK ||
        file->pMethods->xFileSize(file, &size) != SQLITE_OK)
        return false; // and the next use of the database says why
    return size < sizeByHeader(header);
}

void SqliteDatabase::fail(int code) const {
    throw SqliteError(code, database_ ? sqlite3_errmsg(database_.get()) : sqlite3_errstr(code));
}

void SqliteDatabase::check(int code) const {
    if (code != SQLITE_OK) fail(code);
}

void SqliteDatabase::execute(const char* statements) {
    check(sqlite3_exec(database_.get(), statements, nullptr, nullptr, nullptr));
}

// SQLite may have done so already: then this does nothing.
void SqliteDatabase::rollBack() noexcept {
    sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

std::int64_t SqliteDatabase::integer(std::string_view query) {
    int code = SQLITE_OK;
    const SqliteStatement statement(prepared(database_.get(), query, 0, code));
    check(code);
    auto run = statement.run();
    return run.next() ? run.integer(0) : 0;
}

SqliteStatement SqliteDatabase::prepare(std::string_view statement) {
    int code = SQLITE_OK;
    SqliteStatement made(prepared(database_.get(), statement, SQLITE_PREPARE_PERSISTENT, code));
    check(code);
    return made;
}

int SqliteDatabase::changes() const { return sqlite3_changes(database_.get()); }

void SqliteDatabase::keepLog(int longestFile) {
    constexpr int bytesOfPage = 4096 + 24;
    execute(("PRAGMA wal_autocheckpoint = 0; PRAGMA journal_size_limit = " +
             std::to_string(longestFile * bytesOfPage))
                .c_str());
    const auto remember = [](void* pages, sqlite3*, const char*, int count) {
        *static_cast<int*>(pages) = count;
        return SQLITE_OK;
    };
    sqlite3_wal_hook(database_.get(), remember, &logPages_);
}

// A connection that has read nothing yet knows of no log.
void SqliteDatabase::noticeLog() { static_cast<void>(integer("PRAGMA schema_version")); }

bool SqliteDatabase::emptyLog() {
    noticeLog();
    int pages = 0;
    int moved = 0;
    const auto code =
        sqlite3_wal_checkpoint_v2(database_.get(), nullptr, SQLITE_CHECKPOINT_PASSIVE, &pages, &moved);
    return code == SQLITE_OK && pages > 0 && pages == moved;
}

bool SqliteDatabase::cutLog() {
    noticeLog();
    return sqlite3_wal_checkpoint_v2(database_.get(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr,
                                     nullptr) == SQLITE_OK;
}

void SqliteDatabase::setEmptiesLogAtEnd(bool empties) {
    sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, empties ? 0 : 1, nullptr);
}

void SqliteDatabase::beginLogUnflushed() {
    execute("PRAGMA synchronous = OFF");
    isLogUnflushed_ = true;
}

void SqliteDatabase::noteCommit() {
    if (logPages_ > 0 && std::exchange(isLogUnflushed_, false)) execute("PRAGMA synchronous = NORMAL");
}

void SqliteDatabase::flush() {
    noticeLog();
    for (const int which : {SQLITE_FCNTL_FILE_POINTER, SQLITE_FCNTL_JOURNAL_POINTER}) {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(database_.get(), "main", which, &file);
        if (file != nullptr && file->pMethods != nullptr)
            check(file->pMethods->xSync(file, SQLITE_SYNC_NORMAL));
    }
}

bool SqliteDatabase::hasMoved() const {
    int moved = 0;
    sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

} // namespace corvantile
