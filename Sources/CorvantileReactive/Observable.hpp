#pragma once

#include "CorvantileReactive/Disposable.hpp"
#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/DebugPrinter.hpp"
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
    // Before and after the upstream is subscribed, on the subscribing thread.
    std::function<void()> onSubscribe = {}, onSubscribed = {};
    // Once per subscription, ended or disposed, after the upstream has been unsubscribed.
    std::function<void()> onDispose = {};
};

// A stream that can be subscribed to any number of times. A value: copies describe the same stream.
//
// Elements come on the thread that the source emits on, unless `observeOn` is used. An operator's
// function may throw, which emits the error downstream; a handler may not. Dropping a subscription's handle
// does not end the subscription. `dispose` does not wait: on another thread one delivery may still be in
// flight.
template <class T>
class Observable {
public:
    using Element = T;

    explicit Observable(std::shared_ptr<detail::Source<T>> source) : source_(std::move(source)) {}

    // At a terminal its handler runs first, then onDisposed, then the upstream is unsubscribed; at an
    // explicit dispose the upstream is unsubscribed first. onDisposed runs at most once. An error without
    // onError goes to Hooks.
    template <class OnNext = detail::NoHandler, class OnError = detail::NoHandler,
              class OnCompleted = detail::NoHandler, class OnDisposed = detail::NoHandler>
    Disposable subscribe(OnNext onNext = {}, OnError onError = {}, OnCompleted onCompleted = {},
                         OnDisposed onDisposed = {}) const {
        using Subscriber = detail::Subscriber<T, OnNext, OnError, OnCompleted, OnDisposed>;
        const auto source = source_; // a handler may destroy the owner of this stream
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

    // Drops elements until `predicate` first returns false; it is not called again.
    template <class Predicate>
    [[nodiscard]] Observable skipWhile(Predicate predicate) const;

    // Drops an element equal to the one before it.
    [[nodiscard]] Observable distinctUntilChanged() const;

    // Delivers on `scheduler`, in order, terminals included: an error never overtakes elements.
    [[nodiscard]] Observable observeOn(std::shared_ptr<Scheduler> scheduler) const;

    // Subscribes and later unsubscribes on `scheduler`; events are delivered on the thread that emits them.
    [[nodiscard]] Observable subscribeOn(std::shared_ptr<Scheduler> scheduler) const;

    // Not `do`, which is a keyword.
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

#include "CorvantileReactive/ConnectableObservable.hpp"
#include "CorvantileReactive/Operators/Debug.hpp"
#include "CorvantileReactive/Operators/Do.hpp"
#include "CorvantileReactive/Operators/Elementwise.hpp"
#include "CorvantileReactive/Operators/ObserveOn.hpp"
#include "CorvantileReactive/Operators/SubscribeOn.hpp"
