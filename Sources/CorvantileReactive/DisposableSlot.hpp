#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Disposable.hpp"

#include <mutex>

namespace corvantile::rx {

// Holds a handle that several threads touch. The slot's own end disposes nothing.
class CORVANTILE_API DisposableSlot : NonCopyable {
public:
    ~DisposableSlot();

    // Keeps `next` and hands back what was kept, undisposed.
    Disposable exchange(Disposable next);
    // Disposes of what is kept, outside the slot's lock, and keeps nothing. The slot can be used again.
    void disposeAndClear() noexcept;
    [[nodiscard]] bool isEmpty() const;

private:
    mutable std::mutex mutex_;
    Disposable content_;
    bool filled_ = false;
};

} // namespace corvantile::rx
