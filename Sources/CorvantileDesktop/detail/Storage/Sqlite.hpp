#pragma once

#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace corvantile {

// An error of SQLite's. Caught where a store meets its port.
class SqliteError final : public std::exception {
public:
    SqliteError(int extendedCode, std::string message);
    ~SqliteError() override;

    [[nodiscard]] int code() const { return extendedCode_ & 0xFF; } // primary, such as SQLITE_FULL
    [[nodiscard]] int extendedCode() const { return extendedCode_; }
    // The file is no database, or its content contradicts itself.
    [[nodiscard]] bool isUnreadable() const;
    // The same connection may succeed later (full disk, lock); after any other error a new connection is
    // needed.
    [[nodiscard]] bool mayPass() const;
    [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

private:
    int extendedCode_;
    std::string message_;
};

// One run of a statement. Its end makes the statement ready for the next run and frees its locks.
class SqliteRun : NonCopyable {
public:
    explicit SqliteRun(sqlite3_stmt* statement) : statement_(statement) {}
    ~SqliteRun();

    // True: a row can be read. Throws SqliteError.
    bool next();

    // Columns of the row. The bytes last until the next call of `next`.
    [[nodiscard]] std::string_view bytes(int column) const;
    [[nodiscard]] std::int64_t integer(int column) const;

private:
    sqlite3_stmt* const statement_;
};

class SqliteStatement {
public:
    explicit SqliteStatement(sqlite3_stmt* statement) : statement_(statement) {}

    // Binds the texts as blobs, in order, and starts. They are borrowed until the run ends. One run at a
    // time.
    [[nodiscard]] SqliteRun run(std::initializer_list<std::string_view> blobs = {}) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

// A connection to one database file. Threads: one at a time, with the statements made here, which end before
// it. A call waits for other connections' locks, but not for ever; every member throws SqliteError.
class SqliteDatabase : NonCopyable {
public:
    enum class Missing { fails, isMade };

    SqliteDatabase(const std::filesystem::path& file, Missing missing);
    // A database in memory, to be read only, made of a file's bytes.
    explicit SqliteDatabase(std::string_view image);
    // Leaves the write-ahead log as it is, unless `setEmptiesLogAtEnd`.
    ~SqliteDatabase();

    // A file's bytes, without those in its log; nullopt when it cannot be read. An ordinary `close` would
    // release the locks of every connection that this process has to the file.
    [[nodiscard]] static std::optional<std::string> bytesOf(const std::filesystem::path& file);
    // How many bytes a file has, by its header; 0 when that is too short.
    [[nodiscard]] static std::int64_t sizeByHeader(std::string_view bytes);

    // Any number of statements, whose rows are ignored.
    void execute(const char* statements);
    // Runs `work` as one transaction, which takes the write lock first. Rolls back when it throws.
    template <class Work>
    void transact(Work work) {
        execute("BEGIN IMMEDIATE");
        try {
            work();
            execute("COMMIT");
        } catch (...) {
            rollBack();
            throw;
        }
    }
    // The first column of the first row; 0 when there is none.
    [[nodiscard]] std::int64_t integer(std::string_view query);
    // A statement that is kept.
    [[nodiscard]] SqliteStatement prepare(std::string_view statement);

    // Rows that the last statement changed.
    [[nodiscard]] int changes() const;

    // Turns off automatic checkpoints: the log grows until `emptyLog`. `logPages` is its length after the
    // last commit of this connection; 0 before its first. When a longer log is begun again, its file is cut
    // to `longestFile` pages.
    void keepLog(int longestFile);
    [[nodiscard]] int logPages() const { return logPages_; }
    // Moves what it can from the log into the database without stopping anybody. True: all of it.
    bool emptyLog();
    // The same, and cuts the log to nothing. False while others use it.
    bool cutLog();
    // Whether closing the last connection of all processes moves the log into the database, waiting for the
    // disk, and deletes it (initially not).
    void setEmptiesLogAtEnd(bool empties);
    // The first commit does not wait for the disk. Only where there is no log yet, with which a power loss
    // could mix it up. `noteCommit` after it ends that.
    void beginLogUnflushed();
    void noteCommit();
    // What was committed before, by anybody, survives a power loss once it has returned.
    void flush();

    // The file has fewer bytes than its header says, of which SQLite notices nothing in the last page. True
    // also for a moment while pages are moved out of its log.
    [[nodiscard]] bool isCutShort() const;

    // The name no longer leads to the file that is open here.
    [[nodiscard]] bool hasMoved() const;

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };
    [[noreturn]] void fail(int code) const;
    void check(int code) const;
    void rollBack() noexcept;
    void noticeLog();

    std::unique_ptr<sqlite3, Close> database_;
    int logPages_ = 0;
    bool isLogUnflushed_ = false;
};

} // namespace corvantile
