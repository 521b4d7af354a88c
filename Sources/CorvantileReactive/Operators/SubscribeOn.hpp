#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/Scheduler.hpp"
#include "CorvantileReactive/detail/Event.hpp"
#include "CorvantileReactive/detail/LateUpstream.hpp"
#include "CorvantileReactive/detail/Source.hpp"

#include <memory>
#include <utility>

namespace corvantile::rx {

namespace detail {

// The end of the chain above, which is subscribed on the scheduler; hands on to the chain below.
template <class T>
class SubscribeOnObserver final : public FinalObserver<T> {
public:
    SubscribeOnObserver(std::shared_ptr<Observer<T>> downstream, Chain& below)
        : downstream_(std::move(downstream)), below_(below) {}

    void onNext(const T& value) noexcept override {
        if (this->isLive() && !below_.isDisposed()) downstream_->onNext(value);
    }
    void onError(const std::exception_ptr& error) noexcept override { end(Terminal{error}); }
    void onCompleted() noexcept override { end(Terminal{}); }

private:
    void end(const Terminal& terminal) noexcept {
        if (!this->claimTerminal()) return;
        if (!below_.isDisposed()) terminal.deliverTo(*downstream_);
        below_.dispose();
    }

    const std::shared_ptr<Observer<T>> downstream_;
    Chain& below_; // in the final observer below, which downstream_ keeps alive
};

template <class T>
class SubscribeOnSource final : public Source<T> {
public:
    SubscribeOnSource(std::shared_ptr<Source<T>> upstream, std::shared_ptr<Scheduler> scheduler)
        : upstream_(std::move(upstream)), scheduler_(std::move(scheduler)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        chain.noteStage();
        const auto joint = std::make_shared<Joint>(Joint{observer, Disposable()});
        const auto late = std::make_shared<LateUpstream>(scheduler_, joint);
        scheduler_->post([late, source = upstream_, weakJoint = std::weak_ptr(joint), observer, &chain] {
            const auto above = std::make_shared<SubscribeOnObserver<T>>(observer, chain);
            if (!late->begin(above)) return;
            const auto handle = attach(*source, above);
            if (const auto kept = weakJoint.lock()) kept->above = handle;
        });
        return {{}, 0, Disposable(late), joint};
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
