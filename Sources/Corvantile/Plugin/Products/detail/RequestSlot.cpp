#include "Corvantile/Plugin/Products/detail/RequestSlot.hpp"

#include <utility>

namespace corvantile {

// Whether a watch was ended, under the slot's lock.
struct RequestWatch {
    bool hasEnded = false;
};

RequestSlot::~RequestSlot() = default;

RequestSlot::Watch RequestSlot::beginWatch() {
    const std::lock_guard lock(mutex_);
    latestWatch_ = std::make_shared<RequestWatch>();
    return latestWatch_;
}

void RequestSlot::endWatch() {
    const std::lock_guard lock(mutex_);
    if (latestWatch_) latestWatch_->hasEnded = true;
}

std::optional<RequestSlot::RequestNumber> RequestSlot::beginRequest(const Watch& watch) {
    std::unique_lock lock(mutex_);
    if (watch && watch->hasEnded) return std::nullopt;
    const auto former = takeRequest();
    const auto number = latest_;
    lock.unlock();
    former.dispose();
    return number;
}

void RequestSlot::keep(RequestNumber number, rx::Disposable request) {
    std::unique_lock lock(mutex_);
    if (number == latest_) std::swap(request_, request);
    lock.unlock();
    request.dispose();
}

void RequestSlot::cancelRequest() {
    std::unique_lock lock(mutex_);
    const auto former = takeRequest();
    lock.unlock();
    former.dispose();
}

rx::Disposable RequestSlot::takeRequest() {
    ++latest_;
    return std::exchange(request_, {});
}

} // namespace corvantile
