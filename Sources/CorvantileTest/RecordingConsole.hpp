#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class DeviceLink;

// A console that remembers what a process printed. Threads: any.
class CORVANTILE_API RecordingConsole final : public Console {
public:
    // `echo`: prints on standard output as well. A process cut off from its device prints nothing more.
    RecordingConsole(std::shared_ptr<const DeviceLink> link, bool echo);
    ~RecordingConsole() override;

    void print(std::string_view text) override;

    // One text for each print since the last `clear`, in order; a text may have line feeds of its own.
    [[nodiscard]] std::vector<std::string> lines() const;
    // The same as it would stand on a screen: each followed by a line feed.
    [[nodiscard]] std::string text() const;
    void clear();

private:
    const std::shared_ptr<const DeviceLink> link_;
    const bool echo_;
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace corvantile
