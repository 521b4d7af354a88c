#pragma once

#include "CorvantileDesktop/detail/Storage/Sqlite.hpp"

#include <cstdint>
#include <filesystem>
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
};

struct OpenedState {
    std::unique_ptr<SqliteDatabase> database;
    std::optional<std::filesystem::path> setAside; // where the former file is, if it could not be used,
    std::string reason;                            // and why
};

// Errors: SqliteError. What a commit wrote survives the end of the process, not always a power loss
// (synchronous NORMAL). Who writes has the log emptied whenever it grew long, on a thread that may wait.

// Begins a new file where there is none, or none that can be used; that one is kept under another name.
[[nodiscard]] OpenedState openOrBeginState(const std::filesystem::path& file, const StateFormat& format);

// Opens a file that is there and reads all of it: throws also when it is damaged, or of another kind.
[[nodiscard]] std::unique_ptr<SqliteDatabase> openState(const std::filesystem::path& file,
                                                        const StateFormat& format);

// Moves the write-ahead log into the file, waiting for the disk, on a connection of its own. Errors: none;
// nothing is lost with a long log, and a longer one is tried again.
void emptyStateLog(const std::filesystem::path& file, const StateFormat& format);

// Tells when the log has grown long, and again each time that it has grown by as much since.
class LogWatch {
public:
    explicit LogWatch(int longLog) : longLog_(longLog) {} // pages

    // After a write that left so many pages.
    [[nodiscard]] bool hasGrownLong(int pages);

private:
    const int longLog_;
    int nextEmptying_ = longLog_;
};

} // namespace corvantile
