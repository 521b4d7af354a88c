#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"

#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

PaymentObserverRegistration::~PaymentObserverRegistration() = default;
SKPaymentQueue::~SKPaymentQueue() = default;

std::shared_ptr<SKPaymentQueue> SKPaymentQueue::defaultQueue() {
    return Platform::current().ports().paymentQueue;
}

} // namespace corvantile
