#include "Reactive/DisposeBag.hpp"

#include <utility>

namespace corvantile::rx {

DisposeBag::~DisposeBag() {
    for (const auto& disposable : content_) disposable.dispose();
}

void DisposeBag::insert(Disposable disposable) {
    const std::lock_guard lock(mutex_);
    content_.push_back(std::move(disposable));
}

} // namespace corvantile::rx
