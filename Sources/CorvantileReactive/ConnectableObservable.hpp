#pragma once

#include "CorvantileReactive/Disposable.hpp"
#include "CorvantileReactive/Observable.hpp"

#include <memory>
#include <utility>

namespace corvantile::rx {

namespace detail {
template <class T>
class ReplayAllSource;
}

// A stream whose subscribers share one subscription to its source, made by `connect` and not before: without
// it they hear nothing, not even a terminal. What the source emits is kept, without bound, from the first
// subscription or `connect` on.
template <class T>
class ConnectableObservable : public Observable<T> {
public:
    explicit ConnectableObservable(std::shared_ptr<detail::ReplayAllSource<T>> source)
        : Observable<T>(source), core_(std::move(source)) {}

    // Subscribes to the source; while connected, hands back the same connection. Disposing of it leaves the
    // source and the present subscribers, who get no terminal; the next subscription begins anew.
    Disposable connect() const { return core_->connect(); }

private:
    std::shared_ptr<detail::ReplayAllSource<T>> core_;
};

} // namespace corvantile::rx
