#include "Corvantile/Plugin/Products/SKProductPromoPlugin.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Store/SKPayment.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace corvantile {

namespace {

using State = SKPaymentTransactionState;

// Empty for a state without a name.
std::string_view stateText(State state) {
    switch (state) {
    case State::purchasing: return ") is purchasing.";
    case State::purchased: return ") is purchased.";
    case State::failed: return ") is failed.";
    case State::restored: return ") is restored.";
    case State::deferred: return ") is deferred.";
    }
    return {};
}

void log(Console& console, const SKPaymentTransaction& transaction) {
    if (transaction.error()) console.print(describe(transaction.error())); // an error is printed unquoted
    const auto& identifier = transaction.transactionIdentifier();
    if (!identifier) return;
    const auto state = stateText(transaction.transactionState());
    if (!state.empty()) console.debugPrint(("Transaction (" + *identifier).append(state));
}

bool hasEnded(const SKPaymentTransaction& transaction) {
    return transaction.transactionState() == State::purchased ||
           transaction.transactionState() == State::failed;
}

} // namespace

SKProductPromoPluggable::~SKProductPromoPluggable() = default;
SKProductPromoPlugin::SKProductPromoPlugin() = default;
SKProductPromoPlugin::~SKProductPromoPlugin() = default;

void SKProductPromoPlugin::setProduct(std::shared_ptr<SKProduct> product) { product_ = std::move(product); }
void SKProductPromoPlugin::setPayment(std::shared_ptr<SKPayment> payment) { payment_ = std::move(payment); }

bool SKProductPromoPlugin::didFinishLaunchingWithOptions(UIApplication&, const LaunchOptions&) {
    registration_ = SKPaymentQueue::defaultQueue()->addTransactionObserver(*this);
    return true;
}

bool SKProductPromoPlugin::shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>& payment,
                                                 const std::shared_ptr<SKProduct>& product) {
    product_ = product;
    payment_ = payment;
    isProductReadySubject_.onNext(true);
    return true;
}

void SKProductPromoPlugin::updatedTransactions(SKPaymentQueue&, const Transactions& transactions) {
    const auto held = payment_;
    if (!held || transactions.empty()) return;
    const auto isOfHeld = [&](const auto& transaction) {
        return hasEnded(*transaction) &&
               transaction->payment().productIdentifier() == held->productIdentifier();
    };
    if (!std::all_of(transactions.begin(), transactions.end(), isOfHeld)) return;

    const auto queue = SKPaymentQueue::defaultQueue();
    for (const auto& transaction : transactions) queue->finishTransaction(*transaction);
    for (const auto& transaction : transactions) log(*Platform::current().ports().console, *transaction);
    if (transactions.front()->transactionState() == State::purchased) {
        product_.reset();
        payment_.reset();
    }
    finishedSubject_.onNext(true);
}

} // namespace corvantile
