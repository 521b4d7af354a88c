#include "CorvantilePlay/detail/Kinds/PurchaseStreams.hpp"

#include "Corvantile/Plugin/Products/ConsumablePluggable.hpp"
#include "Corvantile/Plugin/Products/SKProductPromoPluggable.hpp"
#include "Corvantile/Plugin/Products/SKProductRequestPluggable.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/StoreText.hpp"

#include <string>
#include <vector>

namespace corvantile::tool {

namespace {

// For people the texts in one line, for programs the values.
struct PublishedList {
    Names texts;
    EventValue::List values;

    [[nodiscard]] Publication publication() const { return {listed(texts), values}; }
};

Publication ofFlag(bool flag) { return {flag ? "true" : "false", flag}; }

Publication ofError(const std::exception_ptr& error) {
    if (!error) return {"none", nullptr};
    return {localizedDescription(error), localizedDescription(error)};
}

Publication ofProducts(const std::vector<std::shared_ptr<SKProduct>>& products) {
    PublishedList list;
    for (const auto& product : products) {
        const auto currency = product->priceLocale().currencyCode.value_or("");
        list.texts.push_back(product->productIdentifier() + " " + product->price().description() + " " +
                             currency);
        list.values.push_back(EventValue::Map{
            {"product", product->productIdentifier()}, {"price", product->price()}, {"currency", currency}});
    }
    return list.publication();
}

Publication ofIdentifiers(const std::vector<std::string>& identifiers) {
    return {listed(identifiers), EventValue::List(identifiers.begin(), identifiers.end())};
}

Publication ofCategories(const std::vector<ProductCategory>& categories) {
    PublishedList list;
    for (const auto& [category, product, records] : categories) {
        const auto& name = product->productIdentifier();
        list.texts.push_back(name + " x " + std::to_string(records.size()));
        EventValue::List transactions;
        for (const auto& record : records)
            transactions.push_back(EventValue::Map{{"transaction", std::to_string(record.transactionID)}});
        list.values.push_back(EventValue::Map{
            {"category", category}, {"product", name}, {"transactions", std::move(transactions)}});
    }
    return list.publication();
}

Publication ofRenewals(const std::vector<RenewalInfo>& renewals) {
    PublishedList list;
    for (const auto& renewal : renewals) {
        EventValue::Map value{{"product", renewal.productID}};
        auto text = renewal.productID;
        if (renewal.willAutoRenew) {
            text += *renewal.willAutoRenew ? " renews" : " ends";
            value.emplace("willAutoRenew", *renewal.willAutoRenew);
        }
        if (renewal.gracePeriodExpiresDate) {
            text += ", in grace until " + describe(*renewal.gracePeriodExpiresDate);
            value.emplace("gracePeriodExpiresDate", *renewal.gracePeriodExpiresDate);
        }
        list.texts.push_back(std::move(text));
        list.values.emplace_back(std::move(value));
    }
    return list.publication();
}

Publication ofProblems(const IAPReceiptPlugin::Problems& problems) {
    PublishedList list;
    for (const auto& problem : problems) {
        list.texts.push_back(describe(problem));
        list.values.push_back(EventValue::Map{{"where", problem.where}, {"error", problem.what}});
    }
    return list.publication();
}

std::string textOf(const SKPaymentTransaction& transaction) {
    auto text = transaction.payment().productIdentifier() + " ";
    text += labelOf(transaction.transactionState());
    if (transaction.payment().quantity() != 1)
        text += " x " + std::to_string(transaction.payment().quantity());
    if (const auto& identifier = transaction.transactionIdentifier()) text += " (" + *identifier + ")";
    if (transaction.error()) text += ": " + localizedDescription(transaction.error());
    return text;
}

EventValue::Map transactionFields(const SKPaymentTransaction& transaction) {
    EventValue::Map fields{{"product", transaction.payment().productIdentifier()},
                           {"quantity", transaction.payment().quantity()},
                           {"state", labelOf(transaction.transactionState())}};
    if (const auto& identifier = transaction.transactionIdentifier())
        fields.emplace("transaction", *identifier);
    if (transaction.error()) fields.emplace("error", localizedDescription(transaction.error()));
    return fields;
}

void reportBatch(Reporter& reporter, const char* kind, const char* verb,
                 const SKPaymentTransactionObserver::Transactions& transactions) {
    Names texts;
    EventValue::List values;
    for (const auto& transaction : transactions) {
        texts.push_back(textOf(*transaction));
        values.emplace_back(transactionFields(*transaction));
    }
    reporter.report("store", kind, std::string("the queue ") + verb + " " + listed(texts),
                    {{"transactions", std::move(values)}});
}

} // namespace

void followProductRequestPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto request = std::dynamic_pointer_cast<SKProductRequestPluggable>(plugIn);
    Follower follower("SKProductRequestPlugin", reporter, bag);
    follower.follow("isLoading", request->isLoading(), ofFlag);
    follower.follow("products", request->products(), ofProducts);
    follower.follow("error", request->error(), ofError);
}

void followProductPromoPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto promo = std::dynamic_pointer_cast<SKProductPromoPluggable>(plugIn);
    Follower follower("SKProductPromoPlugin", reporter, bag);
    follower.follow("isProductReady", promo->isProductReady(), ofFlag);
    follower.follow("isFinished", promo->isFinished(), ofFlag);
}

void followConsumablePlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto consumables = std::dynamic_pointer_cast<ConsumablePluggable>(plugIn);
    Follower("ConsumablePlugin", reporter, bag)
        .follow("consumableProducts", consumables->consumableProducts(), ofIdentifiers);
}

void followReceiptPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto records = std::dynamic_pointer_cast<IAPReceiptPlugin>(plugIn);
    const auto isSome = [](const IAPReceiptPlugin::Problems& problems) { return !problems.empty(); };
    Follower follower("IAPReceiptPlugin", reporter, bag);
    follower.follow("problems", records->problems().filter(isSome), ofProblems);
    follower.follow("renewals", records->renewals(), ofRenewals);
    follower.follow("productCategories", records->productCategories(), ofCategories);
}

PaymentQueueWatch::PaymentQueueWatch(Reporter& reporter)
    : reporter_(reporter), registration_(SKPaymentQueue::defaultQueue()->addTransactionObserver(*this)) {}

PaymentQueueWatch::~PaymentQueueWatch() = default;

void PaymentQueueWatch::updatedTransactions(SKPaymentQueue&, const Transactions& transactions) {
    reportBatch(reporter_, "batch", "reports", transactions);
}

void PaymentQueueWatch::removedTransactions(SKPaymentQueue&, const Transactions& transactions) {
    reportBatch(reporter_, "finished", "is rid of", transactions);
}

void PaymentQueueWatch::restoreCompletedTransactionsFinished(SKPaymentQueue&) {
    reporter_.report("store", "restored", "everything is restored");
}

void PaymentQueueWatch::restoreCompletedTransactionsFailedWithError(SKPaymentQueue&,
                                                                    const std::exception_ptr& error) {
    reporter_.report("store", "restored", "nothing can be restored: " + localizedDescription(error),
                     {{"error", localizedDescription(error)}});
}

bool PaymentQueueWatch::shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>& payment,
                                              const std::shared_ptr<SKProduct>&) {
    reporter_.report("store", "promotion",
                     "the store asks whether the app goes on with " + payment->productIdentifier(),
                     {{"product", payment->productIdentifier()}});
    return false;
}

} // namespace corvantile::tool
