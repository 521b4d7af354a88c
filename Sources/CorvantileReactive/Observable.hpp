#pragma once

#include "CorvantileReactive/DebugLabel.hpp"
#include "CorvantileReactive/Disposable.hpp"
#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/Source.hpp"
#include "CorvantileReactive/detail/Subscriber.hpp"

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace corvantile::rx {

class Scheduler;
template <class T>
class ConnectableObservable;

// Side effects beside a stream. A handler that throws turns its event into an error.
template <class T>
struct DoHandlers {
    std::function<void(const T&)> onNext = {}, afterNext = {};
    std::function<void(const std::exception_ptr&)> onError = {}, afterError = {};
    std::function<void()> onCompleted = {}, afterCompleted = {};
    // Around the subscription to what stands before, on the subscribing thread.
    std::function<void()> onSubscribe = {}, onSubscribed = {};
    // Once per subscription, ended or disposed, when what stands before has been left.
    std::function<void()> onDispose = {};
};

// A stream that can be subscribed to any number of times. A value: copies describe the same stream.
//
// Elements come on whatever thread the source emits on, unless `observeOn` says otherwise. An operator's
// function may throw, which sends the error down; a handler may not. Dropping a subscription's handle does
// not end the subscription. `dispose` does not wait: on another thread one delivery may still be under way.
template <class T>
class Observable {
public:
    using Element = T;

    explicit Observable(std::shared_ptr<detail::Source<T>> source) : source_(std::move(source)) {}

    // The terminal's handler runs first, then onDisposed, then the chain is left; at an explicit dispose the
    // chain is left first. onDisposed runs at most once. An error without onError goes to Hooks.
    template <class OnNext = detail::NoHandler, class OnError = detail::NoHandler,
              class OnCompleted = detail::NoHandler, class OnDisposed = detail::NoHandler>
    Disposable subscribe(OnNext onNext = {}, OnError onError = {}, OnCompleted onCompleted = {},
                         OnDisposed onDisposed = {}) const {
        using Subscriber = detail::Subscriber<T, OnNext, OnError, OnCompleted, OnDisposed>;
        const auto source = source_; // a handler may end whoever holds this stream
        return detail::attach(*source,
                              std::make_shared<Subscriber>(std::move(onNext), std::move(onError),
                                                           std::move(onCompleted), std::move(onDisposed)));
    }

    template <class Transform>
    [[nodiscard]] auto map(Transform transform) const
        -> Observable<std::decay_t<std::invoke_result_t<Transform&, const T&>>>;

    template <class Predicate>
    [[nodiscard]] Observable filter(Predicate predicate) const;

    // The first `count` elements, then completion, within the delivery of the last. take(0) never subscribes.
    // A negative count is a fatal error.
    [[nodiscard]] Observable take(long long count) const;

    // Drops elements until `predicate` first says no; it is not asked again.
    template <class Predicate>
    [[nodiscard]] Observable skipWhile(Predicate predicate) const;

    // Drops an element equal to the one before it.
    [[nodiscard]] Observable distinctUntilChanged() const;

    // Delivers through `scheduler`, in order, terminals included: an error waits behind the elements before
    // it.
    [[nodiscard]] Observable observeOn(std::shared_ptr<Scheduler> scheduler) const;

    // Subscribes on `scheduler`, and later leaves on it; events pass on whatever thread emits them.
    [[nodiscard]] Observable subscribeOn(std::shared_ptr<Scheduler> scheduler) const;

    // `do` is a word of the language.
    [[nodiscard]] Observable doOn(DoHandlers<T> handlers) const;

    // Prints what happens, a line each: `TIMESTAMP: LABEL -> subscribed`, `Event next(VALUE)`,
    // `Event error(ERROR)`, `Event completed`, `isDisposed`. The default label is the caller's
    // `FILE:LINE (FUNCTION)`. With `trimOutput` an event text of more than 40 characters is cut in the
    // middle.
    [[nodiscard]] Observable debug(std::string label = debugLabel(__builtin_FILE(), __builtin_LINE(),
                                                                  __builtin_FUNCTION()),
                                   bool trimOutput = false) const;

    // Shares one subscription, begun by `connect`, and replays everything since to each subscriber.
    [[nodiscard]] ConnectableObservable<T> replayAll() const;

    [[nodiscard]] Observable asObservable() const { return Observable(source_); }

    // For operators.
    [[nodiscard]] const std::shared_ptr<detail::Source<T>>& source() const { return source_; }

private:
    std::shared_ptr<detail::Source<T>> source_;
};

} // namespace corvantile::rx

#include "CorvantileReactive/Operators/Debug.hpp"
#include "CorvantileReactive/Operators/DistinctUntilChanged.hpp"
#include "CorvantileReactive/Operators/Do.hpp"
#include "CorvantileReactive/Operators/Filter.hpp"
#include "CorvantileReactive/Operators/Map.hpp"
#include "CorvantileReactive/Operators/ObserveOn.hpp"
#include "CorvantileReactive/Operators/ReplayAll.hpp"
#include "CorvantileReactive/Operators/SkipWhile.hpp"
#include "CorvantileReactive/Operators/SubscribeOn.hpp"
#include "CorvantileReactive/Operators/Take.hpp"
