#pragma once

#include <exception>

namespace corvantile::rx {

// Receives any number of elements, then at most one of error and completion. Calls must not overlap: whoever
// emits serialises. What a handler throws ends the process: a stream has no event for it.
template <class T>
class Observer {
public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;

    virtual void onNext(const T& value) noexcept = 0;
    virtual void onError(const std::exception_ptr& error) noexcept = 0;
    virtual void onCompleted() noexcept = 0;
};

} // namespace corvantile::rx
