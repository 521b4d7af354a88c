#include "Platform/Store/SKPaymentQueue.hpp"

#include "Platform/Platform.hpp"

namespace corvantile {

PaymentObserverRegistration::~PaymentObserverRegistration() = default;
SKPaymentQueue::~SKPaymentQueue() = default;

std::shared_ptr<SKPaymentQueue> SKPaymentQueue::defaultQueue() {
    return Platform::current().ports().paymentQueue;
}

} // namespace corvantile
