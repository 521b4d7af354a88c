#include "CorvantileTest/detail/Schedule.hpp"

#include "CorvantileTest/TestDevice.hpp"

#include <algorithm>
#include <iterator>

namespace corvantile {

Schedule::Schedule(TestDevice& device, std::uint64_t seed) : device_(device), seed_(seed), random_(seed) {}

void Schedule::post(std::shared_ptr<VirtualQueue> queue, WorkItem work) {
    const std::lock_guard lock(mutex_);
    // Once closed, the caller's arguments die with the call, after the lock.
    if (!isClosed_) append(std::move(queue), std::move(work));
}

void Schedule::postAfter(std::chrono::nanoseconds delay, std::shared_ptr<VirtualQueue> queue, WorkItem work) {
    if (delay.count() <= 0) return post(std::move(queue), std::move(work));
    const auto now = device_.uptime();
    const auto deadline =
        delay > std::chrono::nanoseconds::max() - now ? std::chrono::nanoseconds::max() : now + delay;
    const std::lock_guard lock(mutex_);
    if (isClosed_) return;
    timers_.emplace(TimerKey(deadline, ++lastSequence_), Item{std::move(queue), std::move(work)});
}

bool Schedule::runNext() {
    auto item = take();
    if (!item) return false;
    struct Running {
        const VirtualQueue*& running;
        ~Running() { running = nullptr; }
    } const scope{running_};
    running_ = item->queue.get();
    item->work();
    item->work = nullptr;
    return true;
}

std::optional<std::chrono::nanoseconds> Schedule::nextDeadline() const {
    const std::lock_guard lock(mutex_);
    if (timers_.empty()) return std::nullopt;
    return timers_.begin()->first.first;
}

std::size_t Schedule::readyItems() const {
    const std::lock_guard lock(mutex_);
    std::size_t count = 0;
    for (const auto& [sequence, queue] : ready_) count += queue->waiting.size();
    return count;
}

std::size_t Schedule::pendingTimers() const {
    const std::lock_guard lock(mutex_);
    return timers_.size();
}

void Schedule::close() {
    auto items = takeAll();
    for (auto& item : items) item = {};
}

std::optional<Schedule::Item> Schedule::take() {
    const std::lock_guard lock(mutex_);
    collectDueTimers();
    if (ready_.empty()) return std::nullopt;
    const auto drawn = seed_ == 0 ? 0 : static_cast<std::ptrdiff_t>(random_() % ready_.size());
    const auto chosen = std::next(ready_.begin(), drawn);
    auto queue = std::move(chosen->second);
    ready_.erase(chosen);
    auto work = std::move(queue->waiting.front().work);
    queue->waiting.pop_front();
    if (!queue->waiting.empty()) ready_.emplace(queue->waiting.front().sequence, queue);
    return Item{std::move(queue), std::move(work)};
}

void Schedule::append(std::shared_ptr<VirtualQueue> queue, WorkItem work) {
    const auto sequence = ++lastSequence_;
    auto& waiting = queue->waiting;
    waiting.push_back({sequence, std::move(work)});
    if (waiting.size() == 1) ready_.emplace(sequence, std::move(queue));
}

void Schedule::collectDueTimers() {
    const auto now = device_.uptime();
    while (!timers_.empty() && timers_.begin()->first.first <= now) {
        auto item = std::move(timers_.extract(timers_.begin()).mapped());
        append(std::move(item.queue), std::move(item.work));
    }
}

std::vector<Schedule::Item> Schedule::takeAll() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    std::vector<std::pair<std::uint64_t, Item>> ready;
    for (const auto& [sequence, queue] : ready_) {
        for (auto& item : queue->waiting) ready.push_back({item.sequence, {queue, std::move(item.work)}});
        queue->waiting.clear();
    }
    ready_.clear();
    std::sort(ready.begin(), ready.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Item> all;
    all.reserve(ready.size() + timers_.size());
    for (auto& [sequence, item] : ready) all.push_back(std::move(item));
    for (auto& [key, item] : timers_) all.push_back(std::move(item));
    timers_.clear();
    return all;
}

VirtualQueue::VirtualQueue(std::shared_ptr<Schedule> schedule, bool isMain, std::string label,
                           QualityOfService qualityOfService)
    : schedule_(std::move(schedule)),
      isMain_(isMain),
      label_(std::move(label)),
      qualityOfService_(qualityOfService) {}

VirtualQueue::~VirtualQueue() = default;

void VirtualQueue::async(WorkItem item) { schedule_->post(shared_from_this(), std::move(item)); }

void VirtualQueue::asyncAfter(std::chrono::nanoseconds delay, WorkItem item) {
    schedule_->postAfter(delay, shared_from_this(), std::move(item));
}

bool VirtualQueue::isCurrent() const {
    if (!schedule_->isMainThread()) return false;
    const auto* const running = schedule_->running();
    return running == this || (isMain_ && running == nullptr);
}

} // namespace corvantile
