#pragma once

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/ImmediateSource.hpp"
#include "CorvantileReactive/detail/Stage.hpp"

#include <memory>
#include <utility>

namespace corvantile::rx {

namespace detail {

template <class T>
class TakeStage final : public Stage<T, T> {
public:
    TakeStage(std::shared_ptr<Observer<T>> downstream, Chain& chain, long long count)
        : Stage<T, T>(std::move(downstream), chain), remaining_(count) {}

    void onNext(const T& value) noexcept override {
        if (remaining_ <= 0) return;
        // Counted before the delivery, so that an element emitted from inside the last handler is dropped.
        --remaining_;
        const bool last = remaining_ == 0;
        this->forward(value);
        if (last) this->complete();
    }

private:
    long long remaining_;
};

} // namespace detail

template <class T>
Observable<T> Observable<T>::take(long long count) const {
    if (count < 0) fatalError("take needs a count of zero or more.");
    if (count == 0)
        return Observable(detail::immediate<T>([](Observer<T>& observer) { observer.onCompleted(); }));
    return Observable(
        detail::staged<T, T>(source_, [count](std::shared_ptr<Observer<T>> downstream, detail::Chain& chain) {
            return std::make_shared<detail::TakeStage<T>>(std::move(downstream), chain, count);
        }));
}

} // namespace corvantile::rx
