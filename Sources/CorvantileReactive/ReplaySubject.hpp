#pragma once

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/detail/ReplayBuffer.hpp"
#include "CorvantileReactive/detail/SubjectCore.hpp"
#include "CorvantileReactive/detail/SubjectHandle.hpp"

#include <cstddef>
#include <memory>
#include <optional>

namespace corvantile::rx {

// Also keeps the newest elements and hands them to each new subscriber first, inside `subscribe`, oldest
// first, then the terminal if there was one. What is emitted meanwhile follows, in order, each element
// exactly once, delivered by the subscribing thread. See SubjectHandle for the operations.
template <class T>
class ReplaySubject : public detail::SubjectHandle<T> {
public:
    // Keeps the newest `bufferSize` elements. A negative size is a fatal error.
    [[nodiscard]] static ReplaySubject create(long long bufferSize) {
        if (bufferSize < 0) fatalError("A replay subject needs a buffer size of zero or more.");
        if (bufferSize == 1)
            return ReplaySubject(std::make_shared<detail::SubjectCore<T, detail::LatestBuffer<T>>>());
        return queued(static_cast<std::size_t>(bufferSize));
    }

    // Keeps every element.
    [[nodiscard]] static ReplaySubject createUnbounded() { return queued(std::nullopt); }

private:
    using detail::SubjectHandle<T>::SubjectHandle;

    static ReplaySubject queued(std::optional<std::size_t> limit) {
        using Buffer = detail::QueueBuffer<T>;
        return ReplaySubject(std::make_shared<detail::SubjectCore<T, Buffer>>(Buffer(limit)));
    }
};

} // namespace corvantile::rx
