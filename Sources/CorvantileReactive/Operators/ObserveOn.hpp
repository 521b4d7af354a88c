#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/Scheduler.hpp"
#include "CorvantileReactive/detail/Event.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace corvantile::rx {

namespace detail {

// The final observer of the chain above, which ends with its terminal although that is still pending for the
// chain below. Pending events are kept in a vector. The first one posts a drain item, which takes all that
// are pending when it runs; events that arrive while it runs get another item, behind whatever else is
// queued. The scheduler runs one item at a time.
template <class T>
class ObserveOnObserver final : public FinalObserver<T>,
                                public Detachable,
                                public std::enable_shared_from_this<ObserveOnObserver<T>> {
public:
    ObserveOnObserver(std::shared_ptr<Observer<T>> downstream, Chain& below,
                      std::shared_ptr<Scheduler> scheduler)
        : downstream_(std::move(downstream), below), scheduler_(std::move(scheduler)) {}

    void onNext(const T& value) noexcept override {
        if (this->isLive()) enqueue(Event<T>(value));
    }

    void detach(std::uint64_t) noexcept override { this->dispose(); }

private:
    void terminated(const Terminal& terminal) noexcept override { enqueue(Event<T>(terminal)); }

    void enqueue(Event<T> event) {
        std::unique_lock lock(mutex_);
        const bool isFirst = pending_.empty();
        pending_.push_back(std::move(event));
        lock.unlock();
        if (isFirst) scheduler_->post([self = this->shared_from_this()] { self->drain(); });
    }

    void drain() {
        {
            const std::lock_guard lock(mutex_);
            batch_.swap(pending_);
        }
        for (const auto& event : batch_) downstream_.deliver(event);
        batch_.clear();
    }

    const Downstream<T> downstream_;
    const std::shared_ptr<Scheduler> scheduler_;
    std::mutex mutex_;
    std::vector<Event<T>> pending_;
    std::vector<Event<T>> batch_; // of the running drain item
};

template <class T>
class ObserveOnSource final : public Source<T> {
public:
    ObserveOnSource(std::shared_ptr<Source<T>> upstream, std::shared_ptr<Scheduler> scheduler)
        : upstream_(std::move(upstream)), scheduler_(std::move(scheduler)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        const auto above = std::make_shared<ObserveOnObserver<T>>(observer, chain, scheduler_);
        auto handle = attach(*upstream_, above);
        return {.source = above,
                .keep = std::make_shared<ChainLink>(ChainLink{std::move(observer), std::move(handle)})};
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
