#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/Source.hpp"
#include "CorvantileReactive/detail/Stage.hpp"

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace corvantile::rx {

namespace detail {

// Guards the grammar for a producer of the host: nothing passes after its first terminal, not even what it
// emits from inside that.
template <class T>
class ProducerStage final : public Stage<T, T> {
public:
    using Stage<T, T>::Stage;
    void onNext(const T& value) noexcept override {
        if (!stopped_.load(std::memory_order_acquire)) this->downstream().next(value);
    }
    void onError(const std::exception_ptr& error) noexcept override {
        if (!stopped_.exchange(true, std::memory_order_acq_rel)) Stage<T, T>::onError(error);
    }
    void onCompleted() noexcept override {
        if (!stopped_.exchange(true, std::memory_order_acq_rel)) Stage<T, T>::onCompleted();
    }

private:
    std::atomic<bool> stopped_{false};
};

template <class T>
class CreatedSource final : public Source<T> {
public:
    using Body = std::function<Disposable(AnyObserver<T>)>;
    explicit CreatedSource(Body body) : body_(std::move(body)) {}

    Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) override {
        auto stage = std::make_shared<ProducerStage<T>>(std::move(observer), chain);
        auto production = body_(AnyObserver<T>(stage));
        return {.owned = std::move(production), .keep = std::move(stage)};
    }

private:
    Body body_;
};

} // namespace detail

// One element, then completion.
template <class T>
[[nodiscard]] Observable<T> just(T value) {
    return Observable<T>(detail::immediate<T>([value = std::move(value)](Observer<T>& observer) {
        observer.onNext(value);
        observer.onCompleted();
    }));
}

template <class T>
[[nodiscard]] Observable<T> empty() {
    return Observable<T>(detail::immediate<T>([](Observer<T>& observer) { observer.onCompleted(); }));
}

template <class T>
[[nodiscard]] Observable<T> error(std::exception_ptr error) {
    return Observable<T>(
        detail::immediate<T>([error = std::move(error)](Observer<T>& observer) { observer.onError(error); }));
}

// `body` runs at every subscription, on the subscribing thread, and must not throw. What it returns is
// disposed when the subscription ends or is disposed; at once, if either happened inside `body`. Whoever
// keeps the observer keeps the subscription alive.
template <class T>
[[nodiscard]] Observable<T> create(std::function<Disposable(AnyObserver<T>)> body) {
    return Observable<T>(std::make_shared<detail::CreatedSource<T>>(std::move(body)));
}

} // namespace corvantile::rx
