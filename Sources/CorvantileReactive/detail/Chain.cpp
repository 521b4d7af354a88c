#include "CorvantileReactive/detail/Chain.hpp"

#include <utility>

namespace corvantile::rx::detail {

// The caller's side of a subscription. The first of the caller's dispose and the chain's own end releases
// what it keeps: a finished subscription keeps no closure alive, however long its handle is kept.
class Handle final : public Cancelable {
public:
    Handle(std::shared_ptr<void> keep, Chain& chain) : keep_(std::move(keep)), chain_(chain) {}

    void dispose() noexcept override {
        if (claimed_.exchange(true, std::memory_order_acq_rel)) return;
        const auto keep = std::move(keep_);
        auto& chain = chain_; // this handle may be destroyed meanwhile
        if (chain.claimTeardown()) chain.unsubscribe();
        chain.disposedByHandle();
    }

    void release() noexcept {
        if (claimed_.exchange(true, std::memory_order_acq_rel)) return;
        const auto keep = std::move(keep_);
    }

    bool isDisposed() const noexcept override { return claimed_.load(std::memory_order_acquire); }

private:
    std::atomic<bool> claimed_{false};
    std::shared_ptr<void> keep_;
    Chain& chain_; // kept alive by keep_
};

Detachable::~Detachable() = default;
Chain::~Chain() = default;

void Upstream::unsubscribe() noexcept {
    if (const auto from = source.lock()) from->detach(key);
    owned.dispose();
}

bool Chain::claimTeardown() noexcept {
    const auto before = state_.fetch_or(disposed, std::memory_order_acq_rel);
    return (before & disposed) == 0 && (before & installed) != 0;
}

void Chain::dispose() noexcept {
    if (claimTeardown()) tearDown();
}

void Chain::addHook(StageHook hook) {
    auto* last = &hooks_;
    while (*last) last = &(*last)->next;
    *last = std::make_unique<StageHook>(std::move(hook));
}

Disposable Chain::install(Upstream upstream) {
    auto handle = std::make_shared<Handle>(std::move(upstream.keep), *this);
    upstream_ = std::move(upstream);
    handle_ = handle;
    const auto before = state_.fetch_or(installed, std::memory_order_acq_rel);
    if ((before & disposed) == 0) return Disposable(std::move(handle));
    tearDown();
    return Disposable();
}

// Releasing the handle may destroy this chain: nothing of it is touched after that, here or in the callers.
void Chain::tearDown() noexcept {
    unsubscribe();
    if (const auto handle = handle_.lock()) handle->release();
}

void Chain::unsubscribe() noexcept {
    unsubscribe(hooks_.get());
    const auto upstream = std::exchange(upstream_, Upstream());
}

void Chain::unsubscribe(StageHook* hook) noexcept {
    if (hook == nullptr) return upstream_.unsubscribe();
    if (hook->beforeUpstream) hook->beforeUpstream();
    unsubscribe(hook->next.get());
    if (hook->afterUpstream) hook->afterUpstream();
}

} // namespace corvantile::rx::detail
