#include "CorvantileDesktop/detail/Queues/Timers.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

bool Timers::isLater(const Entry& left, const Entry& right) {
    return std::pair(left.deadline, left.sequence) > std::pair(right.deadline, right.sequence);
}

void Timers::add(Moment deadline, std::shared_ptr<DispatchQueue> queue, WorkItem item) {
    {
        const std::lock_guard lock(mutex_);
        if (!alarm_) return;
        heap_.push_back({deadline, nextSequence_++, std::move(queue), std::move(item)});
        std::push_heap(heap_.begin(), heap_.end(), isLater);
        if (deadline >= alarmAt_) return;
    }
    fire();
}

// One thread hands out at a time, or two could swap items that fall due one after the other. Whoever finds
// another at it leaves: that one looks again before it stops.
void Timers::fire() {
    std::unique_lock lock(mutex_);
    if (std::exchange(firing_, true)) return;
    while (auto entry = takeDue()) {
        lock.unlock();
        entry->queue->async(std::move(entry->item));
        entry.reset(); // may be the queue's last owner
        lock.lock();
    }
    firing_ = false;
    setAlarm();
}

std::optional<Timers::Entry> Timers::takeDue() {
    if (heap_.empty() || heap_.front().deadline > std::chrono::steady_clock::now()) return std::nullopt;
    std::pop_heap(heap_.begin(), heap_.end(), isLater);
    std::optional<Entry> entry(std::move(heap_.back()));
    heap_.pop_back();
    return entry;
}

void Timers::setAlarm() {
    if (!alarm_ || heap_.empty() || heap_.front().deadline == alarmAt_) return;
    alarmAt_ = heap_.front().deadline;
    alarm_->expires_at(alarmAt_);
    alarm_->async_wait([this](const asio::error_code& error) {
        if (error) return;
        {
            const std::lock_guard lock(mutex_);
            alarmAt_ = Moment::max();
        }
        fire();
    });
}

void Timers::close() {
    std::vector<Entry> dropped;
    const std::lock_guard lock(mutex_);
    alarm_.reset();
    dropped.swap(heap_);
}

} // namespace corvantile
