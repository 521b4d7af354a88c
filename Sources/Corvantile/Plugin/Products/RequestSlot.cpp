#include "Corvantile/Plugin/Products/RequestSlot.hpp"

#include <utility>

namespace corvantile {

RequestSlot::~RequestSlot() = default;

RequestSlot::Watch RequestSlot::beginWatch() {
    const std::lock_guard lock(mutex_);
    watch_ = ++lastWatch_;
    return lastWatch_;
}

void RequestSlot::endWatch() {
    const std::lock_guard lock(mutex_);
    watch_.reset();
}

std::optional<RequestSlot::Turn> RequestSlot::beginRequest(std::optional<Watch> watch) {
    std::unique_lock lock(mutex_);
    if (watch && watch != watch_) return std::nullopt;
    const auto former = takeForNextTurn();
    const auto turn = turn_;
    lock.unlock();
    former.dispose();
    return turn;
}

void RequestSlot::keep(Turn turn, rx::Disposable request) {
    std::unique_lock lock(mutex_);
    if (turn == turn_) std::swap(request_, request);
    lock.unlock();
    request.dispose();
}

void RequestSlot::cancelRequest() {
    std::unique_lock lock(mutex_);
    const auto former = takeForNextTurn();
    lock.unlock();
    former.dispose();
}

rx::Disposable RequestSlot::takeForNextTurn() {
    ++turn_;
    return std::exchange(request_, {});
}

} // namespace corvantile
