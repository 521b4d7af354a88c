#pragma once

#include "CorvantileDesktop/detail/Queues/Timers.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>

#include <atomic>
#include <thread>
#include <vector>

namespace corvantile {

// The loops behind the queues: one for the main thread, which is the thread that makes this, and one that a
// few workers share. The workers also wait for timers and sockets; the main loop has nothing but items, so
// that its thread sleeps on a condition and wakes faster than it would from the kernel's event poll.
class Executors : NonCopyable {
public:
    explicit Executors(unsigned workerCount);
    ~Executors();

    [[nodiscard]] asio::io_context& main() { return main_; }
    [[nodiscard]] asio::io_context& workers() { return workers_; }
    [[nodiscard]] Timers& timers() { return timers_; }

    [[nodiscard]] bool isMainThread() const { return std::this_thread::get_id() == mainThread_; }

    // Sequentially consistent, as SerialQueue::async relies on: who reads false after posting has posted
    // before `discard` begins to look.
    [[nodiscard]] bool isClosed() const { return closed_.load(); }

    // No item begins after it, and the workers are gone. A second call does nothing.
    void close();

    // Destroys what is queued, on the calling thread. Only after `close`.
    void discard();

private:
    using Guard = asio::executor_work_guard<asio::io_context::executor_type>;

    const std::thread::id mainThread_;
    std::atomic<bool> closed_{false};
    asio::io_context main_{1};
    asio::io_context workers_;
    Timers timers_{workers_};
    Guard mainGuard_{main_.get_executor()};
    Guard workersGuard_{workers_.get_executor()};
    std::vector<std::thread> threads_;
};

} // namespace corvantile
