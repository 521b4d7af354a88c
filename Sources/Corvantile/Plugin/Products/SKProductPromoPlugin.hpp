#pragma once

#include "Corvantile/Plugin/Products/SKProductPromoPluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <memory>

namespace corvantile {

// Lets a purchase that begins in the store go ahead at once, remembers it, and finishes it when the default
// queue reports a batch of nothing but its purchased or failed transactions. Any other batch is left to other
// observers. A purchase forgets the product, a failure keeps it. Observes the queue from launch on.
class CORVANTILE_API SKProductPromoPlugin final : public SKProductPromoPluggable {
public:
    SKProductPromoPlugin();
    ~SKProductPromoPlugin() override;

    bool didFinishLaunchingWithOptions(UIApplication& application, const LaunchOptions& options) override;
    bool shouldAddStorePayment(SKPaymentQueue& queue, const std::shared_ptr<SKPayment>& payment,
                               const std::shared_ptr<SKProduct>& product) override;
    void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override;

    [[nodiscard]] std::shared_ptr<SKProduct> product() const override { return product_; }
    void setProduct(std::shared_ptr<SKProduct> product) override;
    [[nodiscard]] std::shared_ptr<SKPayment> payment() const override { return payment_; }
    void setPayment(std::shared_ptr<SKPayment> payment) override;

    [[nodiscard]] rx::Observable<bool> isFinished() override { return finishedSubject_.asObservable(); }
    [[nodiscard]] rx::Observable<bool> isProductReady() override {
        return isProductReadySubject_.asObservable();
    }

private:
    std::shared_ptr<SKProduct> product_;
    std::shared_ptr<SKPayment> payment_;
    const rx::ReplaySubject<bool> finishedSubject_ = rx::ReplaySubject<bool>::create(1);
    const rx::ReplaySubject<bool> isProductReadySubject_ = rx::ReplaySubject<bool>::create(1);
    std::unique_ptr<PaymentObserverRegistration> registration_; // last: see there
};

} // namespace corvantile
