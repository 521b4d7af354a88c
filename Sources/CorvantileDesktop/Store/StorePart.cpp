#include "CorvantileDesktop/Store/detail/DesktopStore.hpp"
#include "CorvantileDesktop/detail/DesktopParts.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalPaymentQueue.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalStoreRequests.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

namespace corvantile {

LocalStore& DesktopPlatform::store() const { return *parts_->store; }

void DesktopPlatform::Parts::addStore(Ports& made, const DesktopOptions& options) {
    store =
        makeDesktopStore(options, made.clock, made.console, inBackground(*made.queues, "corvantile.store"));
    made.paymentQueue = LocalPaymentQueue::make(store, made.queues->main(), made.console);
    made.storeRequests = std::make_shared<LocalStoreRequests>(store);
}

} // namespace corvantile
