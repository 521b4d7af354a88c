#include "CorvantileReactive/DisposeBag.hpp"

#include <utility>

namespace corvantile::rx {

DisposeBag::~DisposeBag() {
    std::unique_lock lock(mutex_);
    isDisposed_ = true;
    const auto content = std::move(content_);
    lock.unlock();
    for (const auto& disposable : content) disposable.dispose();
}

void DisposeBag::insert(Disposable disposable) {
    {
        const std::lock_guard lock(mutex_);
        if (!isDisposed_) return content_.push_back(std::move(disposable));
    }
    disposable.dispose();
}

} // namespace corvantile::rx
