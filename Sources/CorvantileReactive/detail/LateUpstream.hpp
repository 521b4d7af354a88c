#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Disposable.hpp"
#include "CorvantileReactive/Scheduler.hpp"
#include "CorvantileReactive/detail/Chain.hpp"

#include <memory>
#include <mutex>

namespace corvantile::rx::detail {

// The way to leave a source that is subscribed to later, on a scheduler. Leaving happens there too, always as
// an item of its own. Threads: any.
class CORVANTILE_API LateUpstream final : public Cancelable {
public:
    // `kept` is what the caller's handle keeps alive.
    LateUpstream(std::shared_ptr<Scheduler> scheduler, std::weak_ptr<void> kept);
    ~LateUpstream() override;

    // The chain above is about to be subscribed; false when nobody wants it any more.
    [[nodiscard]] bool begin(std::weak_ptr<Chain> chain);

    void dispose() noexcept override;
    bool isDisposed() const noexcept override;

private:
    const std::shared_ptr<Scheduler> scheduler_;
    const std::weak_ptr<void> kept_;
    mutable std::mutex mutex_;
    bool disposed_ = false;
    std::weak_ptr<Chain> chain_;
};

} // namespace corvantile::rx::detail
