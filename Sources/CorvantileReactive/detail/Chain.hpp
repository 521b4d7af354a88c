#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Disposable.hpp"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

// One subscription is one chain: the nodes of its operators, from the source down to the final observer, and
// one cancellation for all of them, which lives in the final observer.
//
//   ownership   source -> first node -> next node -> ... -> final observer (all strong, downstream only)
//               caller's Disposable -> Handle -> first node (so that dispose works when the source is gone)
//               chain -> source (weak): nothing points upstream strongly, so there is no cycle
//
// Hence: while the source or the caller's handle lives the chain lives; with neither it is freed silently.
// A handle merely dropped does not dispose.
//
// combineLatest, observeOn, subscribeOn and replayAll stand between chains: what is above may end earlier, or
// be unsubscribed elsewhere, than what is below. They end each chain above with a final observer of their
// own, which forwards to the chain below.
namespace corvantile::rx::detail {

// A source from which an observer can be taken out again.
class CORVANTILE_API Detachable : NonCopyable {
public:
    virtual ~Detachable();

    // `key` is what the subscription was given; it is never used again by this source.
    virtual void detach(std::uint64_t key) noexcept = 0;
};

// What a source returns for a subscription: how to unsubscribe, and what the caller's handle must keep alive.
struct CORVANTILE_API Upstream {
    // For a source that owns its observers.
    std::weak_ptr<Detachable> source = {};
    std::uint64_t key = 0;
    // For any other source.
    Disposable owned = {};
    // The first node of the chain, or whatever owns it.
    std::shared_ptr<void> keep = {};

    void unsubscribe() noexcept;
};

// What the caller's handle keeps alive where one chain forwards to another.
struct CORVANTILE_API ChainLink {
    std::shared_ptr<void> below; // the observer forwarded to
    Disposable above;
};

// What one operator does when its subscription is torn down: before and after the upstream is unsubscribed.
// Neither throws.
struct CORVANTILE_API StageHook {
    std::function<void()> beforeUpstream = {};
    std::function<void()> afterUpstream = {};
    std::unique_ptr<StageHook> next = {}; // the chain's
};

// Threads: any, but for `addHook`, `noteStage` and `install`, which belong to the subscribing thread.
class CORVANTILE_API Chain : NonCopyable {
public:
    virtual ~Chain();

    [[nodiscard]] bool isDisposed() const noexcept {
        return (state_.load(std::memory_order_acquire) & disposed) != 0;
    }

    // Nothing is delivered after it on this thread. The teardown (hooks from the most downstream operator up,
    // then the source is unsubscribed) runs inside the call, or, while the source is being subscribed, at the
    // end of that: a source that ends inside its subscription cannot be unsubscribed earlier.
    void dispose() noexcept;

    // Called from the most downstream operator up, as the subscription is built.
    void addHook(StageHook hook);
    // There is an operator: each disposes the chain once it has forwarded a terminal, so the final observer
    // need not.
    void noteStage() noexcept { hasStages_ = true; }

    // The source has been subscribed to. Returns the handle for the caller.
    [[nodiscard]] Disposable install(Upstream upstream);

protected:
    // The final observer's share of the grammar. Of a terminal and the caller's dispose, the one that claims
    // the end first reports it.
    [[nodiscard]] bool isLive() const noexcept {
        return (state_.load(std::memory_order_acquire) & (disposed | stopped)) == 0;
    }
    [[nodiscard]] bool claimEnd() noexcept {
        return (state_.fetch_or(stopped, std::memory_order_acq_rel) & stopped) == 0;
    }
    // True for the first terminal of a chain that is not disposed.
    [[nodiscard]] bool claimTerminal() noexcept { return !isDisposed() && claimEnd(); }
    // Without an operator nothing else would dispose the chain after a terminal.
    void disposeUnlessStaged() noexcept {
        if (!hasStages_) dispose();
    }

private:
    friend class Handle;

    // The caller's handle was disposed, after the teardown.
    virtual void disposedByHandle() noexcept {}

    // True once, and never before the chain is installed.
    [[nodiscard]] bool claimTeardown() noexcept;
    void tearDown() noexcept;
    void unsubscribe() noexcept;
    void unsubscribe(StageHook* hook) noexcept;

    static constexpr std::uint8_t installed = 1;
    static constexpr std::uint8_t disposed = 2;
    static constexpr std::uint8_t stopped = 4;

    std::atomic<std::uint8_t> state_{0};
    bool hasStages_ = false;
    std::unique_ptr<StageHook> hooks_;
    Upstream upstream_;
    std::weak_ptr<class Handle> handle_;
};

} // namespace corvantile::rx::detail
