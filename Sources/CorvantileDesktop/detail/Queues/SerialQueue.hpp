#pragma once

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <asio/io_context.hpp>

#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace corvantile {

class Executors;

// A queue that takes turns on a loop: while it has items, one turn is posted to the loop or runs there. A
// turn holds the queue; the queue holds its executors weakly, since a turn may wait in their loop for ever.
// (The loop library's own strand costs half as much again per round trip, and must not outlive its loop.)
class SerialQueue final : public DispatchQueue, public std::enable_shared_from_this<SerialQueue> {
public:
    struct Traits {
        std::string label;
        QualityOfService qualityOfService = QualityOfService::standard;
        std::size_t itemsPerTurn = 1;              // then other queues get theirs
        std::optional<std::thread::id> homeThread; // of a queue that is current even between its items
    };

    SerialQueue(std::weak_ptr<Executors> executors, asio::io_context& loop, Traits traits);

    void async(WorkItem item) override;
    void asyncAfter(std::chrono::nanoseconds delay, WorkItem item) override;
    [[nodiscard]] bool isCurrent() const override;
    [[nodiscard]] const std::string& label() const override { return traits_.label; }
    [[nodiscard]] QualityOfService qualityOfService() const override { return traits_.qualityOfService; }

    // Whether the calling thread is inside an item, of whichever queue.
    [[nodiscard]] static bool runningItem();

private:
    bool enqueue(WorkItem item);
    void schedule(Executors& executors);
    void takeTurn(Executors& executors) noexcept;
    bool runNext();
    bool isDone();
    void discard();

    const std::weak_ptr<Executors> executors_;
    asio::io_context& loop_; // stands as long as the executors
    const Traits traits_;
    std::mutex mutex_;
    std::deque<WorkItem> items_;
    bool scheduled_ = false; // a turn is posted or runs
};

// Queues on the loops of `executors`; constructed on the main thread. Every serial queue takes turns on the
// workers, whatever its quality of service, which is only stored.
class DesktopQueues final : public DispatchQueues {
public:
    explicit DesktopQueues(std::shared_ptr<Executors> executors);

    [[nodiscard]] std::shared_ptr<DispatchQueue> main() override { return main_; }
    [[nodiscard]] std::shared_ptr<DispatchQueue> makeSerial(std::string label,
                                                            QualityOfService qualityOfService) override;

private:
    const std::shared_ptr<Executors> executors_;
    const std::shared_ptr<DispatchQueue> main_;
};

} // namespace corvantile
