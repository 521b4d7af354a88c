#pragma once

#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/ReplayBuffer.hpp"
#include "CorvantileReactive/detail/SubjectCore.hpp"
#include "CorvantileReactive/detail/SubjectHandle.hpp"

#include <memory>

namespace corvantile::rx {

// Hands every event to those subscribed at that moment, in order of subscription, on the emitting thread. A
// later subscriber gets a terminal that was, and nothing else. See SubjectHandle for the operations.
template <class T>
class PublishSubject : public detail::SubjectHandle<T> {
public:
    PublishSubject()
        : detail::SubjectHandle<T>(std::make_shared<detail::SubjectCore<T, detail::NoBuffer<T>>>()) {}
};

} // namespace corvantile::rx
