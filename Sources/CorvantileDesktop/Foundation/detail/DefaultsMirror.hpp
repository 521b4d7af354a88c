#pragma once

#include "CorvantileDesktop/Foundation/detail/DefaultsFile.hpp"
#include "CorvantileDesktop/detail/Storage/RetryingFile.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace corvantile {

// User defaults in memory, written through to their file. What the file refuses is kept here and written as
// soon as it can be. Threads: one at a time. Errors: none.
class DefaultsMirror : NonCopyable {
public:
    // The file is opened by the first call. An empty path: everything stays in memory.
    DefaultsMirror(std::filesystem::path path, std::shared_ptr<Console> console,
                   BackgroundRunner inBackground);

    [[nodiscard]] const NSUserDefaults::Dictionary& values() const { return values_; }
    void set(std::string_view key, std::optional<NSUserDefaults::Value> value);

    // Reads what other processes have written, and writes what was refused, if it is time to try again.
    void refresh();

    // Tries to write what was refused. True when the file has everything.
    bool catchUp();
    // Something is still to be written, or the file could not even be opened.
    [[nodiscard]] bool isBehind() const;

private:
    void load(DefaultsFile& file);

    NSUserDefaults::Dictionary values_;
    DefaultsFile::Changes unwritten_; // already in `values_`
    RetryingFile<DefaultsFile> file_;
};

} // namespace corvantile
