#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"

#include <atomic>
#include <memory>

namespace corvantile::rx {

// The main queue. On it, and with nothing of its own pending, an action runs inline; otherwise it is queued,
// also from inside an inline action, so order is kept.
class CORVANTILE_API MainScheduler final : public SerialDispatchQueueScheduler {
public:
    // The one of the installed platform. Threads: any.
    [[nodiscard]] static std::shared_ptr<MainScheduler> instance();
    // On the same queue, but never inline.
    [[nodiscard]] static std::shared_ptr<SerialDispatchQueueScheduler> asyncInstance();

    explicit MainScheduler(std::shared_ptr<DispatchQueue> mainQueue);
    ~MainScheduler() override;

    void post(WorkItem action) override;

private:
    const std::shared_ptr<std::atomic<int>> pending_; // outlived by no item that counts in it
};

} // namespace corvantile::rx
