#pragma once

#include "CorvantileReactive/Observer.hpp"
#include "CorvantileReactive/detail/Chain.hpp"

#include <memory>
#include <utility>

namespace corvantile::rx::detail {

// What an Observable describes. Subscribing may deliver before it returns.
template <class T>
class Source {
public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source() = default;

    // `chain` is that of the subscription which `observer` belongs to; `observer` keeps it alive.
    [[nodiscard]] virtual Upstream subscribe(std::shared_ptr<Observer<T>> observer, Chain& chain) = 0;
};

// The end of a chain, and the home of its cancellation.
template <class T>
class FinalObserver : public Observer<T>, public Chain {};

// Subscribes `last` to `source`, as the end of a chain of its own.
template <class T, class Last>
[[nodiscard]] Disposable attach(Source<T>& source, std::shared_ptr<Last> last) {
    Chain& chain = *last;
    return chain.install(source.subscribe(std::move(last), chain));
}

} // namespace corvantile::rx::detail
