#include "DesktopPlatform/DesktopParts.hpp"
#include "DesktopPlatform/Store/DesktopStore.hpp"
#include "LocalStore/LocalStore.hpp"
#include "LocalStore/Ports/LocalPaymentQueue.hpp"
#include "LocalStore/Ports/LocalStoreRequests.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"

namespace corvantile {

LocalStore& DesktopPlatform::store() const { return *parts_->store; }

void DesktopPlatform::Parts::addStore(Ports& made, const DesktopOptions& options) {
    store =
        makeDesktopStore(options, made.clock, made.console, inBackground(*made.queues, "corvantile.store"));
    made.paymentQueue = LocalPaymentQueue::make(store, made.queues->main(), made.console);
    made.storeRequests = std::make_shared<LocalStoreRequests>(store);
}

} // namespace corvantile
