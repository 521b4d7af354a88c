#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Disposable.hpp"

#include <mutex>

namespace corvantile::rx {

// Holds a handle that several threads use. The slot's destructor disposes nothing.
class CORVANTILE_API DisposableSlot : NonCopyable {
public:
    ~DisposableSlot();

    // Keeps `next` and returns the previous handle, undisposed.
    Disposable exchange(Disposable next);
    // Disposes the handle, outside the slot's lock, and empties the slot, which can be used again.
    void disposeAndClear() noexcept;
    [[nodiscard]] bool isEmpty() const;

private:
    mutable std::mutex mutex_;
    Disposable content_;
    bool filled_ = false;
};

} // namespace corvantile::rx
