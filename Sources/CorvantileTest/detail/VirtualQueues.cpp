#include "CorvantileTest/detail/VirtualQueues.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/detail/Schedule.hpp"

#include <utility>

namespace corvantile {

// One call of a run function: on the right thread, outside items, and with an end.
class VirtualQueues::Run {
public:
    explicit Run(VirtualQueues& queues) : queues_(queues) {
        if (!queues.schedule_->isMainThread())
            fatalError("A test platform runs on the thread that launched it.");
        if (queues.schedule_->running() != nullptr)
            fatalError("A test platform cannot be run from inside one of its own items.");
    }

    void untilIdle() {
        while (queues_.schedule_->runNext())
            if (++items_ >= queues_.itemLimit_) reportEndlessLoop();
    }

    // Runs what falls due up to `uptime`, each at its time; then the clock stands there.
    void until(std::chrono::nanoseconds uptime) {
        untilIdle();
        for (auto due = queues_.schedule_->nextDeadline(); due && *due <= uptime;
             due = queues_.schedule_->nextDeadline()) {
            queues_.device_.passUntil(*due);
            untilIdle();
        }
        queues_.device_.passUntil(uptime);
    }

private:
    [[noreturn]] void reportEndlessLoop() const {
        fatalError(std::to_string(items_) + " items ran in one call with seed " +
                   std::to_string(queues_.seed_) + ". Look for an item that posts itself again and again.");
    }

    VirtualQueues& queues_;
    std::size_t items_ = 0;
};

VirtualQueues::VirtualQueues(TestDevice& device, std::uint64_t seed, std::size_t itemLimit)
    : device_(device),
      seed_(seed),
      itemLimit_(itemLimit),
      schedule_(std::make_shared<Schedule>(device, seed)),
      main_(std::make_shared<VirtualQueue>(schedule_, true, "main", QualityOfService::userInteractive)) {}

VirtualQueues::~VirtualQueues() = default;

std::shared_ptr<DispatchQueue> VirtualQueues::main() { return main_; }

std::shared_ptr<DispatchQueue> VirtualQueues::makeSerial(std::string label,
                                                         QualityOfService qualityOfService) {
    auto queue = std::make_shared<VirtualQueue>(schedule_, false, std::move(label), qualityOfService);
    const std::lock_guard lock(mutex_);
    made_.push_back({queue->label(), qualityOfService});
    return queue;
}

void VirtualQueues::runUntilIdle() { Run(*this).untilIdle(); }

void VirtualQueues::advance(std::chrono::nanoseconds duration) {
    if (duration.count() < 0) fatalError("Time cannot be advanced backwards.");
    Run(*this).until(device_.uptime() + duration);
}

bool VirtualQueues::runUntil(const std::function<bool()>& done, std::chrono::nanoseconds limit) {
    Run run(*this);
    const auto end = device_.uptime() + limit;
    run.untilIdle();
    while (!done()) {
        const auto due = schedule_->nextDeadline();
        if (!due || *due > end) {
            run.until(end);
            return done();
        }
        run.until(*due);
    }
    return true;
}

std::vector<QueueDescription> VirtualQueues::made() const {
    const std::lock_guard lock(mutex_);
    return made_;
}

std::size_t VirtualQueues::readyItems() const { return schedule_->readyItems(); }

std::size_t VirtualQueues::pendingTimers() const { return schedule_->pendingTimers(); }

void VirtualQueues::close() {
    if (schedule_->running() != nullptr)
        fatalError("A process ends from outside its queues, never from inside one of its items.");
    schedule_->close();
}

} // namespace corvantile
