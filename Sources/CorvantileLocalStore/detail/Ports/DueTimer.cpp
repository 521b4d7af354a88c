#include "CorvantileLocalStore/detail/Ports/DueTimer.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

namespace corvantile {

namespace {

constexpr std::chrono::milliseconds sameMoment{1};

} // namespace

struct DueTimer::State {
    std::mutex mutex;
    std::optional<Date> awaited; // what the latest timer waits for, by the device's clock
    std::uint64_t timer = 0;
};

DueTimer::DueTimer(std::shared_ptr<DispatchQueue> queue)
    : queue_(std::move(queue)), state_(std::make_shared<State>()) {}

DueTimer::~DueTimer() = default;

void DueTimer::await(const LocalStore::Due& due, std::function<void()> wake) {
    const std::lock_guard lock(state_->mutex);
    auto& awaited = state_->awaited;
    if (awaited && std::chrono::abs(due.deviceDate - *awaited) < sameMoment) return;
    awaited = due.deviceDate;
    queue_->asyncAfter(due.delay, [state = state_, timer = ++state_->timer, wake = std::move(wake)] {
        {
            const std::lock_guard ending(state->mutex);
            if (state->timer != timer) return;
            state->awaited.reset();
        }
        wake();
    });
}

} // namespace corvantile
