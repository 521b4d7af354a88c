#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <exception>
#include <functional>
#include <memory>
#include <vector>

namespace corvantile::rx {

// What the copies of a Disposable share. `dispose` is idempotent, may be called from any thread, and never
// waits. The last copy may be destroyed while it runs: an implementation does not touch itself after a call
// to user code.
class CORVANTILE_API Cancelable : NonCopyable {
public:
    virtual ~Cancelable();

    virtual void dispose() noexcept = 0;
    [[nodiscard]] virtual bool isDisposed() const noexcept = 0;
};

// A copyable handle to something disposable, most often a subscription. Dropping or overwriting the handle
// does not dispose: only `dispose` and a DisposeBag do.
class CORVANTILE_API Disposable {
public:
    // Disposes nothing.
    Disposable() = default;
    explicit Disposable(std::shared_ptr<Cancelable> target);

    // Runs `action` once, at the first dispose; the handle drops it before it runs. It must not throw.
    [[nodiscard]] static Disposable create(std::function<void()> action);
    // Disposes of all, in the order given.
    [[nodiscard]] static Disposable all(std::vector<Disposable> parts);

    void dispose() const noexcept;
    // True for a handle that disposes nothing, and once disposed.
    [[nodiscard]] bool isDisposed() const noexcept;

private:
    std::shared_ptr<Cancelable> target_;
};

// The error that later subscribers of a disposed subject get.
[[nodiscard]] CORVANTILE_API std::exception_ptr disposedError();

} // namespace corvantile::rx
