#include "Corvantile/Corvantile.hpp"

#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <atomic>
#include <mutex>
#include <utility>

namespace corvantile {

static_assert(Corvantile::domain().size() == 28);

namespace {

struct Switches {
    std::atomic<bool> debug{false};
    std::atomic<bool> dryRun{false};
};

class DelegateSlot {
public:
    std::shared_ptr<UIApplicationDelegate> read() {
        std::call_once(filled_, [this] { replace(UIApplication::shared()->delegate()); });
        const std::lock_guard lock(mutex_);
        return delegate_;
    }

    void write(std::shared_ptr<UIApplicationDelegate> delegate) {
        std::call_once(filled_, [] {});
        replace(std::move(delegate));
    }

    void release() { write(nullptr); }

private:
    // The previous delegate may go with this, and all its plug-ins: not under the lock.
    void replace(std::shared_ptr<UIApplicationDelegate> delegate) {
        const std::lock_guard lock(mutex_);
        delegate_.swap(delegate);
    }

    std::once_flag filled_;
    std::mutex mutex_;
    std::shared_ptr<UIApplicationDelegate> delegate_;
};

Switches& switches() { return Platform::current().process().record<Switches>(); }
DelegateSlot& delegateSlot() { return Platform::current().process().record<DelegateSlot>(); }

} // namespace

bool Corvantile::debug() { return switches().debug.load(std::memory_order_relaxed); }
void Corvantile::setDebug(bool debug) { switches().debug.store(debug, std::memory_order_relaxed); }

bool Corvantile::dryRun() { return switches().dryRun.load(std::memory_order_relaxed); }
void Corvantile::setDryRun(bool dryRun) { switches().dryRun.store(dryRun, std::memory_order_relaxed); }

std::shared_ptr<UIApplicationDelegate> Corvantile::appDelegate() { return delegateSlot().read(); }

void Corvantile::setAppDelegate(std::shared_ptr<UIApplicationDelegate> delegate) {
    delegateSlot().write(std::move(delegate));
}

} // namespace corvantile
