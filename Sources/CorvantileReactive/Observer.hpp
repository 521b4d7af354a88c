#pragma once

#include "CorvantilePlatform/NonCopyable.hpp"

#include <exception>
#include <memory>
#include <utility>

namespace corvantile::rx {

// Receives any number of elements, then at most one of error and completion. Calls must not overlap: the
// emitter serialises them. An exception from a handler ends the process: a stream has no event for it.
template <class T>
class Observer : NonCopyable {
public:
    virtual ~Observer() = default;

    virtual void onNext(const T& value) noexcept = 0;
    virtual void onError(const std::exception_ptr& error) noexcept = 0;
    virtual void onCompleted() noexcept = 0;
};

// A copyable handle by which a producer emits.
template <class T>
class AnyObserver {
public:
    explicit AnyObserver(std::shared_ptr<Observer<T>> target) : target_(std::move(target)) {}

    // Each keeps the target alive for the call, which may destroy the owner of this handle.
    void onNext(const T& value) const noexcept { std::shared_ptr(target_)->onNext(value); }
    void onError(const std::exception_ptr& error) const noexcept { std::shared_ptr(target_)->onError(error); }
    void onCompleted() const noexcept { std::shared_ptr(target_)->onCompleted(); }

private:
    std::shared_ptr<Observer<T>> target_;
};

} // namespace corvantile::rx
