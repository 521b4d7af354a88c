#pragma once

#include "Corvantile/Plugin/Products/ConsumablePluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantileReactive/PublishSubject.hpp"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvantile {

// One consumable product as the host describes it. Immutable.
class CORVANTILE_API ConsumableItem {
public:
    // `value` is the last component of the product's identifier, `title` the text to show for it.
    ConsumableItem(std::string value, std::string title)
        : value_(std::move(value)), title_(std::move(title)) {}

    [[nodiscard]] const std::string& value() const { return value_; }
    [[nodiscard]] const std::string& title() const { return title_; }

    // The store's identifier: the main bundle's, a full stop, and `value`.
    [[nodiscard]] std::string identifier() const;

private:
    std::string value_;
    std::string title_;
};

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
