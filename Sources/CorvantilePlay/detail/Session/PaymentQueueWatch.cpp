#include "CorvantilePlay/detail/Session/PaymentQueueWatch.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/StoreText.hpp"

#include <string>

namespace corvantile::tool {

namespace {

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
