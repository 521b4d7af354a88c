#include "CorvantileReactive/Scheduler.hpp"

#include <memory>
#include <mutex>
#include <utility>

namespace corvantile::rx {

namespace {

// The action and its handle: whoever takes it first, the queue or dispose, has it.
std::pair<Disposable, WorkItem> cancelable(std::function<void()> action) {
    struct State {
        std::mutex mutex;
        std::function<void()> action;
        std::function<void()> take() {
            const std::lock_guard lock(mutex);
            return std::exchange(action, nullptr);
        }
    };
    auto state = std::make_shared<State>();
    state->action = std::move(action);
    auto handle = Disposable::create([state] { state->take(); });
    return {std::move(handle), [state] {
                if (const auto taken = state->take()) taken();
            }};
}

} // namespace

Scheduler::~Scheduler() = default;

Disposable Scheduler::schedule(std::function<void()> action) {
    auto [handle, item] = cancelable(std::move(action));
    post(std::move(item));
    return handle;
}

Disposable Scheduler::scheduleRelative(std::chrono::nanoseconds delay, std::function<void()> action) {
    auto [handle, item] = cancelable(std::move(action));
    postAfter(delay, std::move(item));
    return handle;
}

} // namespace corvantile::rx
