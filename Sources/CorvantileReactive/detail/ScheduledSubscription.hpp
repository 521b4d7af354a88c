#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/Disposable.hpp"
#include "CorvantileReactive/Scheduler.hpp"
#include "CorvantileReactive/detail/Chain.hpp"

#include <memory>
#include <mutex>

namespace corvantile::rx::detail {

// Disposes a subscription that a scheduler makes later. The upstream chain is disposed on that scheduler too,
// always as an item of its own. Threads: any.
class CORVANTILE_API ScheduledSubscription final : public Cancelable {
public:
    // `kept` is what the caller's handle keeps alive.
    ScheduledSubscription(std::shared_ptr<Scheduler> scheduler, std::weak_ptr<void> kept);
    ~ScheduledSubscription() override;

    // Called before the upstream chain is subscribed. False when it has been disposed: do not subscribe.
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
