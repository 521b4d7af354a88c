#include "Reactive/detail/LateUpstream.hpp"

#include <utility>

namespace corvantile::rx::detail {

LateUpstream::LateUpstream(std::shared_ptr<Scheduler> scheduler) : scheduler_(std::move(scheduler)) {}
LateUpstream::~LateUpstream() = default;

bool LateUpstream::begin(std::weak_ptr<Chain> chain) {
    const std::lock_guard lock(mutex_);
    if (!disposed_) chain_ = std::move(chain);
    return !disposed_;
}

void LateUpstream::dispose() noexcept {
    std::shared_ptr<Chain> chain;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(disposed_, true)) return;
        chain = chain_.lock();
    }
    if (chain) scheduler_->post([chain = std::move(chain)] { chain->dispose(); });
}

bool LateUpstream::isDisposed() const noexcept {
    const std::lock_guard lock(mutex_);
    return disposed_;
}

} // namespace corvantile::rx::detail
