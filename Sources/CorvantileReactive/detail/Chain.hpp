#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Disposable.hpp"

#include <atomic>
#include <cstdint>
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
// be left elsewhere, than what is below. They end each chain above with an observer of their own, which hands
// on to the chain below.
namespace corvantile::rx::detail {

// A source from which an observer can be taken out again.
class CORVANTILE_API Detachable {
public:
    Detachable() = default;
    Detachable(const Detachable&) = delete;
    Detachable& operator=(const Detachable&) = delete;
    virtual ~Detachable();

    // `key` is what the subscription was given; it is never used again by this source.
    virtual void detach(std::uint64_t key) noexcept = 0;
};

// What a source gives for a subscription: how to leave it, and what the caller's handle must keep alive.
struct CORVANTILE_API Upstream {
    // Leaving a source that owns its observers.
    std::weak_ptr<Detachable> source;
    std::uint64_t key = 0;
    // Leaving any other source.
    Disposable owned;
    // The first node of the chain, or whatever holds it.
    std::shared_ptr<void> keep;

    void leave() noexcept;
};

// What the caller's handle keeps alive where one chain hands on to another.
struct CORVANTILE_API Joint {
    std::shared_ptr<void> below; // the observer handed on to
    Disposable above;
};

// What one operator does when its subscription is torn down.
class CORVANTILE_API StageHook {
public:
    StageHook() = default;
    StageHook(const StageHook&) = delete;
    StageHook& operator=(const StageHook&) = delete;
    virtual ~StageHook();

    virtual void beforeUpstream() noexcept {}
    virtual void afterUpstream() noexcept {}

private:
    friend class Chain;
    std::unique_ptr<StageHook> next_;
};

// Threads: any, but for `addHook`, `noteStage` and `install`, which belong to the subscribing thread.
class CORVANTILE_API Chain {
public:
    Chain() = default;
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    virtual ~Chain();

    [[nodiscard]] bool isDisposed() const noexcept {
        return (state_.load(std::memory_order_acquire) & disposed) != 0;
    }

    // Nothing is delivered after it on this thread. The teardown (hooks from the most downstream operator up,
    // then the source is left) runs inside the call, or, when the source is still being subscribed to, at the
    // end of that: a source that ends inside its subscription cannot be left earlier.
    void dispose() noexcept;

    // Called from the most downstream operator up, as the subscription is built.
    void addHook(std::unique_ptr<StageHook> hook) noexcept;
    // There is an operator: each tears the chain down once it has forwarded a terminal, so the final observer
    // need not.
    void noteStage() noexcept { hasStages_ = true; }

    // The source has been subscribed to. Returns the handle for the caller.
    [[nodiscard]] Disposable install(Upstream upstream);

protected:
    // The final observer's own share of the grammar. Who claims the end, a terminal or the caller's dispose,
    // is the one that reports it.
    [[nodiscard]] bool isLive() const noexcept {
        return (state_.load(std::memory_order_acquire) & (disposed | stopped)) == 0;
    }
    [[nodiscard]] bool claimEnd() noexcept {
        return (state_.fetch_or(stopped, std::memory_order_acq_rel) & stopped) == 0;
    }
    // The first terminal of a chain that nobody has disposed of.
    [[nodiscard]] bool claimTerminal() noexcept { return !isDisposed() && claimEnd(); }
    // Without an operator nobody else would tear the chain down after a terminal.
    void disposeUnlessStaged() noexcept {
        if (!hasStages_) dispose();
    }

private:
    friend class Handle;

    // The caller's handle was disposed, after the teardown.
    virtual void disposedByHandle() noexcept {}

    // Who may tear the chain down: once, and never before it is installed.
    [[nodiscard]] bool claimTeardown() noexcept;
    void tearDown() noexcept;
    void leaveUpstream() noexcept;
    void leave(StageHook* hook) noexcept;

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
