#pragma once

#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/Chain.hpp"
#include "CorvantileReactive/detail/Event.hpp"

#include <exception>
#include <memory>
#include <utility>

namespace corvantile::rx::detail {

// What an Observable describes. Subscribing may deliver before it returns.
template <class T>
class Source : NonCopyable {
public:
    virtual ~Source() = default;

    // `chain` is that of the subscription which `observer` belongs to; `observer` keeps it alive.
    [[nodiscard]] virtual Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) = 0;
};

// Delivers everything inside the subscription, which it ends.
template <class T, class Deliver>
class ImmediateSource final : public Source<T> {
public:
    explicit ImmediateSource(Deliver deliver) : deliver_(std::move(deliver)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        deliver_(*observer);
        chain.dispose();
        return {.keep = std::move(observer)};
    }

private:
    Deliver deliver_;
};

template <class T, class Deliver>
[[nodiscard]] std::shared_ptr<Source<T>> immediate(Deliver deliver) {
    return std::make_shared<ImmediateSource<T, Deliver>>(std::move(deliver));
}

// Where an operator forwards to: the next observer, and the chain that both belong to. A terminal is
// forwarded first, then the chain is torn down, so the teardown runs inside the terminal's call, begun by the
// most downstream operator. Made on the subscribing thread.
template <class T>
class Downstream {
public:
    Downstream(std::shared_ptr<Observer<T>> observer, Chain& chain)
        : observer_(std::move(observer)), chain_(&chain) {
        chain.noteStage();
    }

    void next(const T& value) const noexcept {
        if (!chain_->isDisposed()) observer_->onNext(value);
    }

    void end(const Terminal& terminal) const noexcept {
        end(terminal, [] {});
    }
    // `beforeTeardown` runs between the two steps.
    template <class Action>
    void end(const Terminal& terminal, const Action& beforeTeardown) const noexcept {
        if (!chain_->isDisposed()) terminal.deliverTo(*observer_);
        beforeTeardown();
        chain_->dispose();
    }

    void deliver(const Event<T>& event) const noexcept {
        event.visit([this](const T& value) { next(value); },
                    [this](const Terminal& terminal) { end(terminal); });
    }

    [[nodiscard]] bool isDisposed() const noexcept { return chain_->isDisposed(); }

private:
    std::shared_ptr<Observer<T>> observer_;
    Chain* chain_; // in the final observer, which observer_ keeps alive
};

// The last observer of a chain, and the home of its cancellation.
template <class T>
class FinalObserver : public Observer<T>, public Chain {
public:
    void onError(const std::exception_ptr& error) noexcept final { end(Terminal{error}); }
    void onCompleted() noexcept final { end(Terminal{}); }

private:
    // Called once, for the first terminal of a chain that is not disposed.
    virtual void terminated(const Terminal& terminal) noexcept = 0;

    void end(const Terminal& terminal) noexcept {
        if (!this->claimTerminal()) return;
        terminated(terminal);
        this->disposeUnlessStaged();
    }
};

// Subscribes `last` to `source`, as the final observer of a new chain.
template <class T, class Last>
[[nodiscard]] Disposable attach(Source<T>& source, std::shared_ptr<Last> last) {
    Chain& chain = *last;
    return chain.install(source.subscribe(std::move(last), chain));
}

} // namespace corvantile::rx::detail
