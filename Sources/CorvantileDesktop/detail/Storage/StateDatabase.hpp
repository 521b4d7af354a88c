#pragma once

#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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

    // How many pages make the log long: then it is emptied in the background.
    int longLog = 200;
};

struct OpenedState {
    std::unique_ptr<SqliteDatabase> database;
    std::optional<std::filesystem::path>
        setAside;     // the former file's new name, or that of a log without its file
    std::string loss; // of an unusable file: "PATH cannot be used (REASON) and was set aside as NAME."
    std::vector<std::string> reports; // whole sentences about what else was lost or put right
};

// Fills a new file while the one that it replaces is still in its place.
using FillState = std::function<void(SqliteDatabase& fresh)>;

// Errors: SqliteError.

// Begins a new file where there is none, or none that can be used; that one is moved aside. A new file
// appears under its name when it is complete. Of a file whose log has lost commits, a copy is kept. All of a
// file is read, in search of damage, if it is durable, if its last process was killed, or if it `isDoubtful`.
[[nodiscard]] OpenedState openOrBeginState(const std::filesystem::path& file, const StateFormat& format,
                                           const FillState& fill = nullptr, bool isDoubtful = true);

// Opens a file that is there and reads all of it: throws also when it is damaged, or of another kind.
[[nodiscard]] std::unique_ptr<SqliteDatabase> openState(const std::filesystem::path& file,
                                                        const StateFormat& format);

// The same without looking for damage, for a reader that takes what it can get.
[[nodiscard]] std::unique_ptr<SqliteDatabase> openUncheckedState(const std::filesystem::path& file,
                                                                 const StateFormat& format);

// A file as it stands, log included, in memory. It waits for no lock, makes no file and needs no permission
// to write. Where there is no file but a complete successor, which a killed process could not name any more,
// it is that one.
[[nodiscard]] std::unique_ptr<SqliteDatabase> openStateImage(const std::filesystem::path& file,
                                                             const StateFormat& format);
// Nothing can be made or changed in the file's folder.
[[nodiscard]] bool isInReadOnlyFolder(const std::filesystem::path& file);
// There is neither the file nor its successor.
[[nodiscard]] bool isStateMissing(const std::filesystem::path& file);

struct InspectedState {
    std::unique_ptr<SqliteDatabase> database; // null when it cannot be read
    std::string fault;                        // what the next process that opens it would report; or empty
};

// For a tool: an image of the file, and everything that is wrong with the file. Errors: none.
[[nodiscard]] InspectedState inspectState(const std::filesystem::path& file, const StateFormat& format);

// Moves the write-ahead log into the file, waiting for the disk, on a connection of its own. Errors: none;
// nothing is lost with a long log, and a longer one is tried again.
void emptyStateLog(const std::filesystem::path& file, const StateFormat& format);

// How long the platform waits before it empties a log that has just been written to: what comes with it is
// moved in one go.
inline constexpr std::chrono::seconds logRest{1};

// Runs work that waits for the disk, on another thread or never. Empty: the caller runs it.
using BackgroundRunner = std::function<void(std::function<void()>)>;

// Keeps a file's write-ahead log short. Threads: one at a time.
class LogTrimmer {
public:
    LogTrimmer(std::filesystem::path file, const StateFormat& format, BackgroundRunner inBackground);

    // After a write: has the log emptied in the background after the first one, whenever it is long, and once
    // more each time that it has grown by as much since. A burst is faster than the background: a log that
    // has become several times as long is emptied here and now.
    void noteWrite(SqliteDatabase& database);

private:
    void emptyInBackground();

    const std::filesystem::path file_;
    const StateFormat& format_;
    const BackgroundRunner inBackground_;
    const std::shared_ptr<std::atomic<bool>> isPosted_ = std::make_shared<std::atomic<bool>>(false);
    bool hasWritten_ = false;
    int nextEmptying_; // pages
    int nextOwnEmptying_;
};

} // namespace corvantile
