#include "Corvantile/Plugin/Products/RequestSlot.hpp"

#include <utility>

namespace corvantile {

RequestSlot::~RequestSlot() = default;

RequestSlot::Watch RequestSlot::beginWatch() {
    const std::lock_guard lock(mutex_);
    current_ = ++last_;
    return last_;
}

void RequestSlot::endWatch() {
    const std::lock_guard lock(mutex_);
    current_.reset();
}

// Nothing is disposed under the lock, here and below.
bool RequestSlot::disposeAndClear(std::optional<Watch> watch) {
    std::unique_lock lock(mutex_);
    if (isOver(watch)) return false;
    const auto former = std::exchange(request_, {});
    lock.unlock();
    former.dispose();
    return true;
}

void RequestSlot::keep(rx::Disposable request, std::optional<Watch> watch) {
    std::unique_lock lock(mutex_);
    if (!isOver(watch)) std::swap(request_, request);
    lock.unlock();
    request.dispose();
}

} // namespace corvantile
