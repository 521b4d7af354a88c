#pragma once

#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace corvantile {

// One kind of SQLite file in the state folder, which processes share through a write-ahead log.
struct StateFormat {
    std::int32_t applicationIdentifier = 0;
    int version = 1;
    const char* content = ""; // for people: "no …" is what another file holds
    const char* tables = "";  // the statements that make them
    const char* query = "";   // names every column that is used; a file on which it fails is of another kind

    // A commit survives a power loss once it has returned (synchronous FULL), and a file that exists but
    // cannot be opened is never replaced. Otherwise a commit survives the end of the process (synchronous
    // NORMAL).
    bool isDurable = false;
};

struct OpenedState {
    std::unique_ptr<SqliteDatabase> database;
    std::optional<std::filesystem::path>
        setAside;     // the former file's new name, or that of a log without its file
    std::string loss; // of an unusable file: "PATH cannot be used (REASON) and was set aside as NAME."
};

// Fills a new file while the one that it replaces is still in its place.
using FillState = std::function<void(SqliteDatabase& fresh)>;

// Errors: SqliteError.

// Begins a new file where there is none, or none that can be used; that one is moved aside. A new file
// appears under its name when it is complete.
[[nodiscard]] OpenedState openOrBeginState(const std::filesystem::path& file, const StateFormat& format,
                                           const FillState& fill = nullptr);

// Opens a file that is there and reads all of it: throws also when it is damaged, or of another kind.
[[nodiscard]] std::unique_ptr<SqliteDatabase> openState(const std::filesystem::path& file,
                                                        const StateFormat& format);

// The same without looking for damage, for a reader that takes what it can get.
[[nodiscard]] std::unique_ptr<SqliteDatabase> openUncheckedState(const std::filesystem::path& file,
                                                                 const StateFormat& format);

// Moves the write-ahead log into the file, waiting for the disk, on a connection of its own. Errors: none;
// nothing is lost with a long log, and a longer one is tried again.
void emptyStateLog(const std::filesystem::path& file, const StateFormat& format);

// Runs work that waits for the disk, on another thread or never. Empty: the caller runs it.
using BackgroundRunner = std::function<void(std::function<void()>)>;

// Keeps a file's write-ahead log from growing without end.
class LogTrimmer {
public:
    LogTrimmer(std::filesystem::path file, const StateFormat& format, int longLog,
               BackgroundRunner inBackground);

    // After a write that left so many pages: has a long log emptied in the background, and once more each
    // time that it has grown by as much since.
    void noteWrite(int pages);

private:
    const std::filesystem::path file_;
    const StateFormat& format_;
    const int longLog_; // pages
    const BackgroundRunner inBackground_;
    int nextEmptying_;
};

} // namespace corvantile
