#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <functional>
#include <memory>
#include <vector>

namespace corvantile::rx {

// What a Disposable shares between its copies. `dispose` is idempotent, from any thread, and never waits. The
// last copy may go while it runs: an implementation no longer touches itself once it has called out.
class CORVANTILE_API Cancelable {
public:
    Cancelable() = default;
    Cancelable(const Cancelable&) = delete;
    Cancelable& operator=(const Cancelable&) = delete;
    virtual ~Cancelable();

    virtual void dispose() noexcept = 0;
    [[nodiscard]] virtual bool isDisposed() const noexcept = 0;
};

// A copyable handle to something that can be ended, most often a subscription. Dropping or overwriting the
// handle ends nothing: only `dispose` and a DisposeBag do.
class CORVANTILE_API Disposable {
public:
    // Disposes nothing.
    Disposable() = default;
    explicit Disposable(std::shared_ptr<Cancelable> target);

    // Runs `action` once, at the first dispose; it is let go before it runs. It does not throw.
    [[nodiscard]] static Disposable create(std::function<void()> action);
    // Disposes of all, in the order given.
    [[nodiscard]] static Disposable all(std::vector<Disposable> parts);

    void dispose() const noexcept;
    // True for a handle that disposes nothing, and once disposed.
    [[nodiscard]] bool isDisposed() const noexcept;

private:
    std::shared_ptr<Cancelable> target_;
};

} // namespace corvantile::rx
