#include "CorvantileReactive/Disposable.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <atomic>
#include <utility>

namespace corvantile::rx {

namespace {

class ActionDisposable final : public Cancelable {
public:
    explicit ActionDisposable(std::function<void()> action) : action_(std::move(action)) {}

    void dispose() noexcept override {
        if (disposed_.exchange(true, std::memory_order_acq_rel)) return;
        const auto action = std::exchange(action_, nullptr);
        if (action) action();
    }

    bool isDisposed() const noexcept override { return disposed_.load(std::memory_order_acquire); }

private:
    std::atomic<bool> disposed_{false};
    std::function<void()> action_;
};

} // namespace

Cancelable::~Cancelable() = default;

Disposable::Disposable(std::shared_ptr<Cancelable> target) : target_(std::move(target)) {}

Disposable Disposable::create(std::function<void()> action) {
    return Disposable(std::make_shared<ActionDisposable>(std::move(action)));
}

Disposable Disposable::all(std::vector<Disposable> parts) {
    return create([parts = std::move(parts)] {
        for (const auto& part : parts) part.dispose();
    });
}

void Disposable::dispose() const noexcept {
    if (target_) target_->dispose();
}

bool Disposable::isDisposed() const noexcept { return !target_ || target_->isDisposed(); }

std::exception_ptr disposedError() {
    static const auto error = std::make_exception_ptr(
        NSError("corvantile.rx", 1, {{NSError::localizedDescriptionKey, "Object was disposed."}}));
    return error;
}

} // namespace corvantile::rx
