#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/ObservedPaymentQueue.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class DeviceLink;
class ScriptedRequests;

// A store that does what the test says: payment queue and requests of one process. What lasts, such as the
// catalogue and the unfinished transactions, is the device's (DeviceStore). Threads: any.
class CORVANTILE_API ScriptedStore final : public ObservedPaymentQueue, public StoreRequests {
public:
    // One call of finishTransaction, repeated ones as well.
    struct Finish {
        std::string productIdentifier;
        std::optional<std::string> transactionIdentifier;

        friend bool operator==(const Finish&, const Finish&) = default;
    };

    ScriptedStore(std::shared_ptr<const DeviceLink> link, std::shared_ptr<DispatchQueue> mainQueue);
    ~ScriptedStore() override;

    // A transaction as the store would make it now: what was purchased or restored has an identifier of its
    // own and a date, what failed the error. It appears nowhere before it is delivered.
    [[nodiscard]] std::shared_ptr<SKPaymentTransaction>
    makeTransaction(std::string productIdentifier,
                    SKPaymentTransactionState state = SKPaymentTransactionState::purchased,
                    SKErrorCode error = SKErrorCode::paymentCancelled);
    // One batch for all observers, of transactions that are unfinished from now on.
    void deliver(Transactions batch);

    // Someone taps the product in the store: the observers are asked, and one that says yes lets it be
    // bought.
    void promote(std::shared_ptr<SKProduct> product);

    // A payment is purchased at once, unless its outcome was given here. Several calls, as many payments.
    // `purchasing` leaves it open.
    void answerNextPayment(SKPaymentTransactionState state,
                           SKErrorCode error = SKErrorCode::paymentCancelled);
    // What became of a payment that was left open or deferred. Nothing when it is not there.
    void settle(const SKPaymentTransaction& open, SKPaymentTransactionState state,
                SKErrorCode error = SKErrorCode::paymentCancelled);
    void failNextRestore(SKErrorCode error);

    [[nodiscard]] std::vector<Finish> finishes() const;

    // The next request of the kind fails. Several calls, as many requests.
    void failNextProducts(SKErrorCode error = SKErrorCode::unknown);
    void failNextReceipt(SKErrorCode error = SKErrorCode::unknown);
    // Of requests made from now on: how long they take, and whether they wait until they are let go.
    void setRequestDelay(std::chrono::nanoseconds delay);
    void setRequestsHanging(bool hanging);
    // What was asked for, in order.
    [[nodiscard]] std::vector<ProductIdentifiers> productRequests() const;
    [[nodiscard]] int receiptRequests() const;
    [[nodiscard]] int requestsUnderWay() const;
    [[nodiscard]] int cancelledRequests() const;

    // Lets go of what hangs: the process ends.
    void close();

    void addPayment(std::shared_ptr<const SKPayment> payment) override;
    void restoreCompletedTransactions() override;
    void finishTransaction(const SKPaymentTransaction& transaction) override;
    [[nodiscard]] Transactions transactions() const override;

    [[nodiscard]] std::shared_ptr<PlatformRequest> products(const ProductIdentifiers& identifiers,
                                                            std::shared_ptr<DispatchQueue> queue,
                                                            ProductsCompletion completion) override;
    [[nodiscard]] std::shared_ptr<PlatformRequest> receipt(std::shared_ptr<DispatchQueue> queue,
                                                           ReceiptCompletion completion) override;

private:
    struct Outcome {
        SKPaymentTransactionState state = SKPaymentTransactionState::purchased;
        SKErrorCode error = SKErrorCode::paymentCancelled;
    };
    using Failures = std::deque<SKErrorCode>;

    std::shared_ptr<SKPaymentTransaction> make(std::shared_ptr<const SKPayment> payment, Outcome outcome);
    void announce(Transactions batch);
    void conclude(const SKPaymentTransaction& open, Outcome outcome);
    std::exception_ptr takeFailure(Failures& failures);

    const std::shared_ptr<const DeviceLink> link_;
    const std::unique_ptr<ScriptedRequests> requests_;
    mutable std::mutex mutex_; // also held from a change of the device's transactions to its announcement
    std::deque<Outcome> outcomes_;
    Failures restoreFailures_;
    std::vector<Finish> finishes_;
    Failures productsFailures_;
    Failures receiptFailures_;
    std::vector<ProductIdentifiers> productRequests_;
    int receiptRequests_ = 0;
};

} // namespace corvantile
