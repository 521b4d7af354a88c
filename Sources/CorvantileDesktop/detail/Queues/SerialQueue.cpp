#include "CorvantileDesktop/detail/Queues/SerialQueue.hpp"

#include "CorvantileDesktop/detail/Queues/Executors.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <asio/post.hpp>

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

thread_local const DispatchQueue* current = nullptr;

class CurrentQueue : NonCopyable {
public:
    explicit CurrentQueue(const DispatchQueue* queue) { current = queue; }
    ~CurrentQueue() { current = nullptr; }
};

Timers::Moment deadlineAfter(std::chrono::nanoseconds delay) {
    const auto now = std::chrono::steady_clock::now();
    const auto wait = std::max(delay, std::chrono::nanoseconds::zero());
    return wait > Timers::Moment::max() - now ? Timers::Moment::max() : now + wait;
}

constexpr std::size_t itemsPerWorkerTurn = 64;

// One item a turn, so that the loop can end, or ask whether it is done, after each.
std::shared_ptr<DispatchQueue> makeMain(const std::shared_ptr<Executors>& executors) {
    SerialQueue::Traits traits{"main", QualityOfService::userInteractive, 1, std::this_thread::get_id()};
    return std::make_shared<SerialQueue>(executors, executors->main(), std::move(traits));
}

} // namespace

SerialQueue::SerialQueue(std::weak_ptr<Executors> executors, asio::io_context& loop, Traits traits)
    : executors_(std::move(executors)), loop_(loop), traits_(std::move(traits)) {}

bool SerialQueue::runningItem() { return current != nullptr; }

bool SerialQueue::isCurrent() const {
    if (current != nullptr) return current == this;
    return traits_.homeThread == std::this_thread::get_id();
}

void SerialQueue::async(WorkItem item) {
    const auto executors = executors_.lock();
    if (!executors || executors->isClosed()) return;
    if (enqueue(std::move(item))) schedule(*executors);
    if (executors->isClosed()) discard(); // they may have looked for queued items before this one came
}

void SerialQueue::asyncAfter(std::chrono::nanoseconds delay, WorkItem item) {
    const auto executors = executors_.lock();
    if (!executors || executors->isClosed()) return;
    executors->timers().add(deadlineAfter(delay), shared_from_this(), std::move(item));
}

// True when the caller has to schedule a turn: outside the lock, or the woken thread runs into it.
bool SerialQueue::enqueue(WorkItem item) {
    const std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
    return !std::exchange(scheduled_, true);
}

void SerialQueue::schedule(Executors& executors) {
    asio::post(loop_, [self = shared_from_this(), &executors] { self->takeTurn(executors); });
}

void SerialQueue::takeTurn(Executors& executors) noexcept {
    for (std::size_t count = 0; count < traits_.itemsPerTurn; ++count) {
        if (executors.isClosed()) return discard();
        if (!runNext()) return;
    }
    if (!isDone()) schedule(executors);
}

// False when there was none; the turn is over then.
bool SerialQueue::runNext() {
    const CurrentQueue scope(this);
    WorkItem item; // destroyed inside the scope: the item ends before the next one begins
    {
        const std::lock_guard lock(mutex_);
        if (items_.empty()) return scheduled_ = false;
        item = std::move(items_.front());
        items_.pop_front();
    }
    item();
    return true;
}

bool SerialQueue::isDone() {
    const std::lock_guard lock(mutex_);
    if (items_.empty()) scheduled_ = false;
    return items_.empty();
}

void SerialQueue::discard() {
    std::deque<WorkItem> dropped;
    const std::lock_guard lock(mutex_);
    scheduled_ = false;
    dropped.swap(items_);
}

DesktopQueues::DesktopQueues(std::shared_ptr<Executors> executors)
    : executors_(std::move(executors)), main_(makeMain(executors_)) {}

std::shared_ptr<DispatchQueue> DesktopQueues::makeSerial(std::string label,
                                                         QualityOfService qualityOfService) {
    SerialQueue::Traits traits{std::move(label), qualityOfService, itemsPerWorkerTurn, std::nullopt};
    return std::make_shared<SerialQueue>(executors_, executors_->workers(), std::move(traits));
}

} // namespace corvantile
