#pragma once

#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The file that holds user defaults; Docs/Files/UserDefaults.md describes it. Threads: one at a time; any
// number of processes. Errors: SqliteError.
class DefaultsFile {
public:
    using Change = std::optional<NSUserDefaults::Value>; // no value: the key goes
    using Changes = std::map<std::string, Change, std::less<>>;

    static const StateFormat format;

    explicit DefaultsFile(std::unique_ptr<SqliteDatabase> database);

    [[nodiscard]] NSUserDefaults::Dictionary load();

    // All of it survives the end of the process once the call has returned, or none of it was written.
    void write(std::string_view key, const Change& change);
    void write(const Changes& changes);

    // Another connection has written since the last `load`.
    [[nodiscard]] bool hasChangedElsewhere();
    [[nodiscard]] SqliteDatabase& database() const { return *database_; }

    // What was written so far survives a power loss once it has returned. On a connection of its own, for
    // another thread.
    static void flush(const std::filesystem::path& file);

private:
    std::int64_t version();

    const std::unique_ptr<SqliteDatabase> database_;
    SqliteStatement select_;
    SqliteStatement setText_;
    SqliteStatement setBoolean_;
    SqliteStatement remove_;
    SqliteStatement version_;
    std::int64_t loadedVersion_ = 0;
};

} // namespace corvantile
