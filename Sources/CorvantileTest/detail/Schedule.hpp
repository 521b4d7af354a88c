#pragma once

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace corvantile {

class TestDevice;
class VirtualQueue;

// What the queues of one process wait for, and which item runs next. The thread that made it is the process's
// main thread and runs every item; any thread may post. An item is never destroyed under the lock.
class Schedule {
public:
    struct Item {
        std::shared_ptr<VirtualQueue> queue;
        WorkItem work;
    };

    // Seed 0 runs items in the order posted, over all queues; another seed draws the queue that comes next.
    Schedule(TestDevice& device, std::uint64_t seed);

    void post(std::shared_ptr<VirtualQueue> queue, WorkItem work);
    void postAfter(std::chrono::nanoseconds delay, std::shared_ptr<VirtualQueue> queue, WorkItem work);

    // Runs one ready item and destroys it, still on its queue. False when none is ready.
    bool runNext();

    [[nodiscard]] std::optional<std::chrono::nanoseconds> nextDeadline() const;
    [[nodiscard]] std::size_t readyItems() const;
    [[nodiscard]] std::size_t pendingTimers() const;

    [[nodiscard]] bool isMainThread() const { return std::this_thread::get_id() == mainThread_; }
    // The queue whose item the main thread runs; null between items. Threads: main.
    [[nodiscard]] const VirtualQueue* running() const { return running_; }

    // What waits is destroyed unrun, in the order in which it would have run, and so is whatever comes later.
    void close();

private:
    using TimerKey = std::pair<std::chrono::nanoseconds, std::uint64_t>; // deadline, call

    std::optional<Item> take();
    void append(std::shared_ptr<VirtualQueue> queue, WorkItem work);
    void collectDueTimers();
    std::vector<Item> takeAll();

    TestDevice& device_;
    const std::uint64_t seed_;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    const VirtualQueue* running_ = nullptr; // of the main thread

    mutable std::mutex mutex_; // guards what follows, and every queue's `waiting`
    bool isClosed_ = false;
    std::uint64_t lastSequence_ = 0;
    std::mt19937_64 random_;
    std::map<std::uint64_t, std::shared_ptr<VirtualQueue>>
        ready_; // by the sequence of the first item waiting
    std::map<TimerKey, Item> timers_;
};

// One serial queue on a schedule.
class VirtualQueue final : public DispatchQueue, public std::enable_shared_from_this<VirtualQueue> {
public:
    struct Waiting {
        std::uint64_t sequence = 0;
        WorkItem work;
    };

    VirtualQueue(std::shared_ptr<Schedule> schedule, bool isMain, std::string label,
                 QualityOfService qualityOfService);
    ~VirtualQueue() override;

    void async(WorkItem item) override;
    void asyncAfter(std::chrono::nanoseconds delay, WorkItem item) override;
    [[nodiscard]] bool isCurrent() const override;
    [[nodiscard]] const std::string& label() const override { return label_; }
    [[nodiscard]] QualityOfService qualityOfService() const override { return qualityOfService_; }

    std::deque<Waiting> waiting; // the schedule's

private:
    const std::shared_ptr<Schedule> schedule_;
    const bool isMain_;
    const std::string label_;
    const QualityOfService qualityOfService_;
};

} // namespace corvantile
