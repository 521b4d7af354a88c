#pragma once

#include "CorvantileDesktop/Adjust/detail/OutboxPackage.hpp"
#include "CorvantileDesktop/Adjust/detail/ServerAnswer.hpp"

#include <memory>
#include <mutex>

namespace corvantile {

class AdjustDelegate;
class DispatchQueue;
class Outbox;

// Tells the delegate, on main, what became of attempts to deliver; subscriptions have no callbacks. The
// attribution is told when it is another than the outbox remembers. Threads: any.
class DelegateReporter {
public:
    DelegateReporter(std::shared_ptr<Outbox> outbox, std::shared_ptr<DispatchQueue> main);

    // Not kept alive.
    void setDelegate(std::weak_ptr<AdjustDelegate> delegate);

    void report(const OutboxPackage& package, const ServerAnswer& answer);

private:
    [[nodiscard]] bool isNews(const ServerAnswer& answer);

    const std::shared_ptr<Outbox> outbox_;
    const std::shared_ptr<DispatchQueue> main_;
    std::mutex mutex_;
    std::weak_ptr<AdjustDelegate> delegate_;
};

} // namespace corvantile
