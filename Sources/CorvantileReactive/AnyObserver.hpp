#pragma once

#include "CorvantileReactive/Observer.hpp"

#include <exception>
#include <memory>
#include <utility>

namespace corvantile::rx {

// A copyable handle by which a producer emits.
template <class T>
class AnyObserver {
public:
    explicit AnyObserver(std::shared_ptr<Observer<T>> target) : target_(std::move(target)) {}

    // Each holds the target for the call: what it delivers may end whoever holds this handle.
    void onNext(const T& value) const noexcept { std::shared_ptr(target_)->onNext(value); }
    void onError(const std::exception_ptr& error) const noexcept { std::shared_ptr(target_)->onError(error); }
    void onCompleted() const noexcept { std::shared_ptr(target_)->onCompleted(); }

private:
    std::shared_ptr<Observer<T>> target_;
};

} // namespace corvantile::rx
