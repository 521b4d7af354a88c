#pragma once

#include "Reactive/Observable.hpp"
#include "Reactive/Scheduler.hpp"
#include "Reactive/detail/Event.hpp"
#include "Reactive/detail/Stage.hpp"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace corvantile::rx {

namespace detail {

// Elements wait in the stage's own vector. One drain item at a time stands in the scheduler's queue: it takes
// what waits when it runs, and what comes meanwhile gets an item of its own behind whatever else is queued.
template <class T>
class ObserveOnStage final : public Stage<T, T>, public std::enable_shared_from_this<ObserveOnStage<T>> {
public:
    ObserveOnStage(std::shared_ptr<Observer<T>> downstream, Chain& chain,
                   std::shared_ptr<Scheduler> scheduler)
        : Stage<T, T>(std::move(downstream), chain), scheduler_(std::move(scheduler)) {}

    void onNext(const T& value) noexcept override { enqueue(Event<T>(value)); }
    void onError(const std::exception_ptr& error) noexcept override { enqueue(Event<T>(Terminal{error})); }
    void onCompleted() noexcept override { enqueue(Event<T>(Terminal{})); }

private:
    void enqueue(Event<T> event) {
        if (this->chain().isDisposed()) return;
        std::unique_lock lock(mutex_);
        waiting_.push_back(std::move(event));
        const bool first = !std::exchange(draining_, true);
        lock.unlock();
        if (first) postDrain();
    }

    void postDrain() {
        scheduler_->post([self = this->shared_from_this()] { self->drain(); });
    }

    void drain() {
        {
            const std::lock_guard lock(mutex_);
            batch_.swap(waiting_);
        }
        for (const auto& event : batch_) {
            if (this->chain().isDisposed()) break;
            event.deliverTo(*this->downstream());
            if (event.isTerminal()) this->chain().dispose();
        }
        batch_.clear();
        std::unique_lock lock(mutex_);
        draining_ = !waiting_.empty();
        const bool more = draining_;
        lock.unlock();
        if (more) postDrain();
    }

    const std::shared_ptr<Scheduler> scheduler_;
    std::mutex mutex_;
    std::vector<Event<T>> waiting_;
    std::vector<Event<T>> batch_; // of the running drain item
    bool draining_ = false;
};

} // namespace detail

template <class T>
Observable<T> Observable<T>::observeOn(std::shared_ptr<Scheduler> scheduler) const {
    return Observable(detail::staged<T, T>(
        source_,
        [scheduler = std::move(scheduler)](std::shared_ptr<Observer<T>> downstream, detail::Chain& chain) {
            return std::make_shared<detail::ObserveOnStage<T>>(std::move(downstream), chain, scheduler);
        }));
}

} // namespace corvantile::rx
