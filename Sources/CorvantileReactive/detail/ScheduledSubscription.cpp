#include "CorvantileReactive/detail/ScheduledSubscription.hpp"

#include <utility>

namespace corvantile::rx::detail {

ScheduledSubscription::ScheduledSubscription(std::shared_ptr<Scheduler> scheduler, std::weak_ptr<void> kept)
    : scheduler_(std::move(scheduler)), kept_(std::move(kept)) {}
ScheduledSubscription::~ScheduledSubscription() = default;

bool ScheduledSubscription::begin(std::weak_ptr<Chain> chain) {
    const std::lock_guard lock(mutex_);
    if (!disposed_) chain_ = std::move(chain);
    return !disposed_;
}

void ScheduledSubscription::dispose() noexcept {
    std::shared_ptr<Chain> chain;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(disposed_, true)) return;
        chain = chain_.lock();
    }
    if (!chain) return;
    // A chain whose source is gone is kept alive by the caller's handle alone; here until it is disposed.
    scheduler_->post([chain = std::move(chain), kept = kept_.lock()] { chain->dispose(); });
}

bool ScheduledSubscription::isDisposed() const noexcept {
    const std::lock_guard lock(mutex_);
    return disposed_;
}

} // namespace corvantile::rx::detail
