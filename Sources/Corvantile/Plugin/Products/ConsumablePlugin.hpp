#pragma once

#include "Corvantile/Plugin/Products/ConsumablePluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantileReactive/PublishSubject.hpp"

#include <memory>
#include <string>
#include <vector>

namespace corvantile {

// Finishes every purchase that the payment queue reports, consumable or not, and publishes the products of
// those that are. Observes the default queue as long as it lives: subscribe before the first main-queue turn
// after making it, for what an earlier launch left unfinished comes then.
class CORVANTILE_API ConsumablePlugin final : public ConsumablePluggable {
public:
    explicit ConsumablePlugin(std::vector<std::string> consumableProductIDs);
    [[deprecated("Say what is consumable: ConsumablePlugin(consumableProductIDs).")]] ConsumablePlugin();
    ~ConsumablePlugin() override;

    void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override;

    [[nodiscard]] rx::Observable<std::vector<std::string>> consumableProducts() override {
        return consumableProductsPublisher_.asObservable();
    }

private:
    [[nodiscard]] bool isConsumable(const std::string& productIdentifier) const;

    const std::vector<std::string> consumableProductIDs_;
    const rx::PublishSubject<std::vector<std::string>> consumableProductsPublisher_;
    const std::unique_ptr<PaymentObserverRegistration> registration_; // last: see there
};

} // namespace corvantile
