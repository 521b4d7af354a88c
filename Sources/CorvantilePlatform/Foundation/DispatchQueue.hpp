#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace corvantile {

enum class QualityOfService { userInteractive, userInitiated, standard, utility, background };

using WorkItem = std::function<void()>;

// A serial queue: items run one after the other, in the order posted, each seeing the effects of the one
// before. The thread may differ from item to item, except on the main queue.
// Threads: any, also from an item of the same queue. Items do not throw. Items hold their queue alive.
// Once the platform is ending, what is posted is destroyed unrun.
class CORVANTILE_API DispatchQueue : NonCopyable {
public:
    virtual ~DispatchQueue();

    // The queue of the main thread, of the installed platform.
    [[nodiscard]] static std::shared_ptr<DispatchQueue> main();

    // Never runs `item` inside the call.
    virtual void async(WorkItem item) = 0;

    // Not before `delay` has passed on the monotonic clock; asynchronous also for zero or less. Items that
    // fall due together run in order of (deadline, call).
    virtual void asyncAfter(std::chrono::nanoseconds delay, WorkItem item) = 0;

    // True inside an item of this queue; for the main queue, anywhere on the main thread that is not inside
    // an item of another queue.
    [[nodiscard]] virtual bool isCurrent() const = 0;

    [[nodiscard]] virtual const std::string& label() const = 0;
    [[nodiscard]] virtual QualityOfService qualityOfService() const = 0;
};

// Where queues come from. Threads: any.
class CORVANTILE_API DispatchQueues : NonCopyable {
public:
    virtual ~DispatchQueues();

    [[nodiscard]] virtual std::shared_ptr<DispatchQueue> main() = 0;

    // A new private queue each time: the label names, it does not share.
    [[nodiscard]] virtual std::shared_ptr<DispatchQueue> makeSerial(std::string label,
                                                                    QualityOfService qualityOfService) = 0;
};

} // namespace corvantile
