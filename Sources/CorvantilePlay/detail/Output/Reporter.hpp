#pragma once

#include "CorvantilePlay/PlayReporter.hpp"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>

namespace corvantile::tool {

// One thing that happened during a play, for people (`text`) and for programs (`kind`, `fields`).
struct PlayEvent {
    std::chrono::nanoseconds time{}; // since the play began, on the monotonic clock
    std::string who;                 // "host", "sink", "console", "network", or where a command came from
    std::string kind;                // one word for each sort of event, such as "launch" or "error"
    std::string text;
    EventValue::Map fields = {};
};

// Puts a time on each event and calls the one listener, in order of time.
// Threads: any. The listener is called on the reporting thread, one event at a time; it must not report.
class Reporter final : public PlayReporter {
public:
    using Listener = std::function<void(const PlayEvent&)>;

    explicit Reporter(Listener listener);
    ~Reporter() override;

    void report(std::string who, std::string kind, std::string text, EventValue::Map fields = {}) override;

    // How many events there were.
    [[nodiscard]] std::size_t count() const { return count_.load(); }

private:
    const Listener listener_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::mutex mutex_;
    std::atomic<std::size_t> count_{0};
};

} // namespace corvantile::tool
