#pragma once

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/Stage.hpp"

#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

// The operators that transform or drop one element at a time: map, filter, skipWhile, distinctUntilChanged,
// take. A throwing function fails the stream. Only that function is guarded: what goes wrong downstream is
// not its fault.
namespace corvantile::rx {

namespace detail {

template <class In, class Out, class Transform>
class MapStage final : public Stage<In, Out> {
public:
    MapStage(std::shared_ptr<Observer<Out>> downstream, Chain& chain, Transform transform)
        : Stage<In, Out>(std::move(downstream), chain), transform_(std::move(transform)) {}

    void onNext(const In& value) noexcept override {
        std::optional<Out> result;
        try {
            result.emplace(transform_(value));
        } catch (...) {
            return this->downstream().end(Terminal{std::current_exception()});
        }
        this->downstream().next(*result);
    }

private:
    Transform transform_;
};

// Forwards the elements for which `predicate` returns true.
template <class T, class Predicate>
class FilterStage final : public Stage<T, T> {
public:
    FilterStage(std::shared_ptr<Observer<T>> downstream, Chain& chain, Predicate predicate)
        : Stage<T, T>(std::move(downstream), chain), predicate_(std::move(predicate)) {}

    void onNext(const T& value) noexcept override {
        bool passes = false;
        try {
            passes = predicate_(value);
        } catch (...) {
            return this->downstream().end(Terminal{std::current_exception()});
        }
        if (passes) this->downstream().next(value);
    }

private:
    Predicate predicate_;
};

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
        this->downstream().next(value);
        if (last) this->downstream().end(Terminal{});
    }

private:
    long long remaining_;
};

} // namespace detail

template <class T>
template <class Transform>
auto Observable<T>::map(Transform transform) const
    -> Observable<std::decay_t<std::invoke_result_t<Transform&, const T&>>> {
    using Out = std::decay_t<std::invoke_result_t<Transform&, const T&>>;
    using Stage = detail::MapStage<T, Out, Transform>;
    return Observable<Out>(detail::staged<T, Out, Stage>(source_, std::move(transform)));
}

template <class T>
template <class Predicate>
Observable<T> Observable<T>::filter(Predicate predicate) const {
    return Observable(detail::staged<T, T, detail::FilterStage<T, Predicate>>(source_, std::move(predicate)));
}

template <class T>
template <class Predicate>
Observable<T> Observable<T>::skipWhile(Predicate predicate) const {
    return filter([predicate = std::move(predicate), skipping = true](const T& value) mutable {
        if (skipping) skipping = predicate(value);
        return !skipping;
    });
}

template <class T>
Observable<T> Observable<T>::distinctUntilChanged() const {
    return filter([last = std::optional<T>()](const T& value) mutable {
        if (last && *last == value) return false;
        last = value;
        return true;
    });
}

template <class T>
Observable<T> Observable<T>::take(long long count) const {
    if (count < 0) fatalError("take needs a count of zero or more.");
    if (count == 0)
        return Observable(detail::immediate<T>([](Observer<T>& observer) { observer.onCompleted(); }));
    return Observable(detail::staged<T, T, detail::TakeStage<T>>(source_, count));
}

} // namespace corvantile::rx
