#include "CorvantileReactive/detail/LateUpstream.hpp"

#include <utility>

namespace corvantile::rx::detail {

LateUpstream::LateUpstream(std::shared_ptr<Scheduler> scheduler, std::weak_ptr<void> kept)
    : scheduler_(std::move(scheduler)), kept_(std::move(kept)) {}
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
    if (!chain) return;
    // A chain whose source is gone lives by the caller's handle alone, and must live until it is left.
    scheduler_->post([chain = std::move(chain), kept = kept_.lock()] { chain->dispose(); });
}

bool LateUpstream::isDisposed() const noexcept {
    const std::lock_guard lock(mutex_);
    return disposed_;
}

} // namespace corvantile::rx::detail
