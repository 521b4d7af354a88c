#pragma once

#include "CorvantileDesktop/Foundation/detail/DefaultsFile.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace corvantile {

class Console;

// User defaults in memory, written through to their file. What the file refuses is kept here and written as
// soon as it can be; the console hears of the beginning and the end of such a time, and of a file that was
// set aside. Threads: one at a time. Errors: none.
class DefaultsMirror {
public:
    // The file is opened by the first call. None: everything stays in memory.
    DefaultsMirror(std::filesystem::path path, std::shared_ptr<Console> console);

    [[nodiscard]] const NSUserDefaults::Dictionary& values() const { return values_; }
    void set(std::string_view key, std::optional<NSUserDefaults::Value> value);

    // Takes over what other processes have written, and writes what had to wait, if it is time to try again.
    void notice();

    // Tries to write what had to wait. True when the file has everything.
    bool catchUp();
    // Something waits to be written, or the file could not even be opened.
    [[nodiscard]] bool isBehind() const;

    // The length of the file's write-ahead log after the last set.
    [[nodiscard]] int logPages() const { return file_ ? file_->logPages() : 0; }

private:
    using Moment = std::chrono::steady_clock::time_point;

    [[nodiscard]] bool isWritten(std::string_view key, const DefaultsFile::Change& change);
    void open();
    void fail(const SqliteError& error);
    void say(const std::string& text) const;

    const std::filesystem::path path_;
    const std::shared_ptr<Console> console_;
    std::unique_ptr<DefaultsFile> file_;
    NSUserDefaults::Dictionary values_;
    DefaultsFile::Changes unwritten_; // already in `values_`
    Moment nextAttempt_{};
    bool hasComplained_ = false;
};

} // namespace corvantile
