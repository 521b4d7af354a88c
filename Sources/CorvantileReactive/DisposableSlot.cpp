#include "CorvantileReactive/DisposableSlot.hpp"

#include <utility>

namespace corvantile::rx {

DisposableSlot::~DisposableSlot() = default;

Disposable DisposableSlot::exchange(Disposable next) {
    const std::lock_guard lock(mutex_);
    filled_ = true;
    return std::exchange(content_, std::move(next));
}

void DisposableSlot::disposeAndClear() noexcept {
    Disposable content;
    {
        const std::lock_guard lock(mutex_);
        filled_ = false;
        content = std::exchange(content_, Disposable());
    }
    content.dispose();
}

bool DisposableSlot::isEmpty() const {
    const std::lock_guard lock(mutex_);
    return !filled_;
}

} // namespace corvantile::rx
