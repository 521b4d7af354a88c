#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/Scheduler.hpp"
#include "CorvantileReactive/detail/ScheduledSubscription.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <memory>
#include <utility>

namespace corvantile::rx {

namespace detail {

// The final observer of the chain above, which is subscribed on the scheduler; forwards to the chain below.
template <class T>
class SubscribeOnObserver final : public FinalObserver<T> {
public:
    explicit SubscribeOnObserver(Downstream<T> downstream) : downstream_(std::move(downstream)) {}

    void onNext(const T& value) noexcept override {
        if (this->isLive()) downstream_.next(value);
    }

private:
    void terminated(const Terminal& terminal) noexcept override { downstream_.end(terminal); }

    const Downstream<T> downstream_;
};

template <class T>
class SubscribeOnSource final : public Source<T> {
public:
    SubscribeOnSource(std::shared_ptr<Source<T>> upstream, std::shared_ptr<Scheduler> scheduler)
        : upstream_(std::move(upstream)), scheduler_(std::move(scheduler)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        const auto link = std::make_shared<ChainLink>(ChainLink{observer, Disposable()});
        const auto scheduled = std::make_shared<ScheduledSubscription>(scheduler_, link);
        const Downstream<T> downstream(std::move(observer), chain);
        scheduler_->post([scheduled, source = upstream_, weakLink = std::weak_ptr(link), downstream] {
            const auto above = std::make_shared<SubscribeOnObserver<T>>(downstream);
            if (!scheduled->begin(above)) return;
            const auto handle = attach(*source, above);
            if (const auto kept = weakLink.lock()) kept->above = handle;
        });
        return {.owned = Disposable(scheduled), .keep = link};
    }

private:
    std::shared_ptr<Source<T>> upstream_;
    std::shared_ptr<Scheduler> scheduler_;
};

} // namespace detail

template <class T>
Observable<T> Observable<T>::subscribeOn(std::shared_ptr<Scheduler> scheduler) const {
    return Observable(std::make_shared<detail::SubscribeOnSource<T>>(source_, std::move(scheduler)));
}

} // namespace corvantile::rx
