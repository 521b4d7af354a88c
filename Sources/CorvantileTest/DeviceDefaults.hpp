#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"

#include <mutex>
#include <optional>
#include <string_view>

namespace corvantile {

// The app's user defaults as a test device keeps them. A test looks at what lasts, plays another process that
// writes, and takes the storage away. Threads: any.
class CORVANTILE_API DeviceDefaults {
public:
    [[nodiscard]] NSUserDefaults::Dictionary values() const;
    // As if another process had set it. No value removes the key.
    void set(std::string_view key, std::optional<NSUserDefaults::Value> value);
    void removeAll();

    // While it is not writable, as with a full disk, what processes set stays with them; they write it with
    // the first call after that, or lose it with their end.
    [[nodiscard]] bool isWritable() const;
    void setWritable(bool writable);

    // While it is not readable, as before the first unlock after a restart, processes find nothing in it.
    [[nodiscard]] bool isReadable() const;
    void setReadable(bool readable);

private:
    mutable std::mutex mutex_;
    NSUserDefaults::Dictionary values_;
    bool isWritable_ = true;
    bool isReadable_ = true;
};

} // namespace corvantile
