#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/Scheduler.hpp"
#include "CorvantileReactive/detail/Event.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace corvantile::rx {

namespace detail {

// The end of the chain above, which is over with its terminal although that still waits for the chain below.
// Events wait in a vector. The first to wait posts a drain item, which takes all that waits when it runs;
// what comes meanwhile gets an item of its own behind whatever else is queued. The scheduler runs one at a
// time.
template <class T>
class ObserveOnObserver final : public FinalObserver<T>,
                                public Detachable,
                                public std::enable_shared_from_this<ObserveOnObserver<T>> {
public:
    ObserveOnObserver(std::shared_ptr<Observer<T>> downstream, Chain& below,
                      std::shared_ptr<Scheduler> scheduler)
        : downstream_(std::move(downstream)), below_(below), scheduler_(std::move(scheduler)) {}

    void onNext(const T& value) noexcept override {
        if (this->isLive()) enqueue(Event<T>(value));
    }
    void onError(const std::exception_ptr& error) noexcept override { end(Terminal{error}); }
    void onCompleted() noexcept override { end(Terminal{}); }

    void detach(std::uint64_t) noexcept override { this->dispose(); }

private:
    void end(Terminal terminal) noexcept {
        if (!this->claimTerminal()) return;
        enqueue(Event<T>(std::move(terminal)));
        this->disposeUnlessStaged();
    }

    void enqueue(Event<T> event) {
        std::unique_lock lock(mutex_);
        const bool isFirst = waiting_.empty();
        waiting_.push_back(std::move(event));
        lock.unlock();
        if (isFirst) scheduler_->post([self = this->shared_from_this()] { self->drain(); });
    }

    void drain() {
        {
            const std::lock_guard lock(mutex_);
            batch_.swap(waiting_);
        }
        for (const auto& event : batch_) {
            if (below_.isDisposed()) break;
            event.deliverTo(*downstream_);
            if (event.isTerminal()) below_.dispose();
        }
        batch_.clear();
    }

    const std::shared_ptr<Observer<T>> downstream_;
    Chain& below_; // in the final observer below, which downstream_ keeps alive
    const std::shared_ptr<Scheduler> scheduler_;
    std::mutex mutex_;
    std::vector<Event<T>> waiting_;
    std::vector<Event<T>> batch_; // of the running drain item
};

template <class T>
class ObserveOnSource final : public Source<T> {
public:
    ObserveOnSource(std::shared_ptr<Source<T>> upstream, std::shared_ptr<Scheduler> scheduler)
        : upstream_(std::move(upstream)), scheduler_(std::move(scheduler)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        chain.noteStage();
        const auto above = std::make_shared<ObserveOnObserver<T>>(observer, chain, scheduler_);
        const auto joint = std::make_shared<Joint>(Joint{observer, attach(*upstream_, above)});
        return {above, 0, {}, joint};
    }

private:
    std::shared_ptr<Source<T>> upstream_;
    std::shared_ptr<Scheduler> scheduler_;
};

} // namespace detail

template <class T>
Observable<T> Observable<T>::observeOn(std::shared_ptr<Scheduler> scheduler) const {
    return Observable(std::make_shared<detail::ObserveOnSource<T>>(source_, std::move(scheduler)));
}

} // namespace corvantile::rx
