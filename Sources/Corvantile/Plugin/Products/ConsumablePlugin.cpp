#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Store/SKPayment.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

bool isPurchased(const SKPaymentTransaction& transaction) {
    return transaction.transactionState() == SKPaymentTransactionState::purchased;
}

} // namespace

std::string ConsumableItem::identifier() const {
    return Platform::current().ports().mainBundle->bundleIdentifier().append(".").append(value_);
}

ConsumablePluggable::~ConsumablePluggable() = default;

ConsumablePlugin::ConsumablePlugin(std::vector<std::string> consumableProductIDs)
    : consumableProductIDs_(std::move(consumableProductIDs)),
      registration_(SKPaymentQueue::defaultQueue()->addTransactionObserver(*this)) {}

ConsumablePlugin::ConsumablePlugin() { unimplementedInitializer("ConsumablePlugin"); }

ConsumablePlugin::~ConsumablePlugin() = default;

bool ConsumablePlugin::isConsumable(const std::string& productIdentifier) const {
    return std::find(consumableProductIDs_.begin(), consumableProductIDs_.end(), productIdentifier) !=
           consumableProductIDs_.end();
}

void ConsumablePlugin::updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) {
    std::vector<std::string> consumables;
    for (const auto& transaction : transactions) {
        if (!isPurchased(*transaction)) continue;
        queue.finishTransaction(*transaction);
        const auto& product = transaction->payment().productIdentifier();
        if (isConsumable(product)) consumables.push_back(product);
    }
    consumableProductsPublisher_.onNext(consumables);
}

} // namespace corvantile
