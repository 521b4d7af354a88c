#include "Corvantile/Plugin/AdNetwork/detail/EventBuffer.hpp"

#include <utility>

namespace corvantile {

EventBuffer::EventBuffer() = default;
EventBuffer::~EventBuffer() = default;

std::optional<EventBuffer::Subject> EventBuffer::subject() {
    const std::lock_guard lock(mutex_);
    if (!subject_ && !isDiscarded_) subject_ = Subject::createUnbounded();
    return subject_;
}

void EventBuffer::discard() {
    std::optional<Subject> last; // goes when the lock is free again
    const std::lock_guard lock(mutex_);
    isDiscarded_ = true;
    last.swap(subject_);
}

} // namespace corvantile
