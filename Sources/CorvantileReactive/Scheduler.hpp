#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Disposable.hpp"

#include <chrono>
#include <functional>

namespace corvantile::rx {

// Runs actions one after the other, in order. Threads: any. Dropping the scheduler or a handle cancels
// nothing.
class CORVANTILE_API Scheduler : NonCopyable {
public:
    virtual ~Scheduler();

    // Without a handle, for operators. Asynchronous, unless the scheduler documents otherwise.
    virtual void post(WorkItem action) = 0;

    // Disposed of before the start, the action does not run.
    [[nodiscard]] Disposable schedule(std::function<void()> action);

    // The same, not before `delay` has passed; always asynchronous.
    [[nodiscard]] Disposable scheduleRelative(std::chrono::nanoseconds delay, std::function<void()> action);

private:
    virtual void postAfter(std::chrono::nanoseconds delay, WorkItem action) = 0;
};

} // namespace corvantile::rx
