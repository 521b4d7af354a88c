#pragma once

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace corvantile {

// Items that wait for their moment on the monotonic clock, then go to their queues in order of (deadline,
// call). One alarm, set to the earliest deadline, serves them all. Threads: any.
class Timers : NonCopyable {
public:
    using Moment = std::chrono::steady_clock::time_point;

    explicit Timers(asio::io_context& context) : alarm_(std::in_place, context) {}

    // Hands `item` to `queue` at `deadline`; at once when that has passed.
    void add(Moment deadline, std::shared_ptr<DispatchQueue> queue, WorkItem item);

    // Destroys what waits, and from now on what is added. No thread runs the context any more.
    void close();

private:
    struct Entry {
        Moment deadline;
        std::uint64_t sequence = 0;
        std::shared_ptr<DispatchQueue> queue;
        WorkItem item;
    };

    static bool isLater(const Entry& left, const Entry& right);
    void fire();
    std::optional<Entry> takeDue();
    void setAlarm();

    std::mutex mutex_;
    std::vector<Entry> heap_; // the earliest in front
    std::uint64_t nextSequence_ = 0;
    bool firing_ = false;
    Moment alarmAt_ = Moment::max();
    std::optional<asio::steady_timer> alarm_; // empty once closed
};

} // namespace corvantile
