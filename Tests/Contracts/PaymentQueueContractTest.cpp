#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"

#include "Tests/Contracts/StoreHarness.hpp"

#include <algorithm>
#include <thread>

namespace corvantile::PaymentQueueContractTest {

using Transactions = SKPaymentQueue::Transactions;
using Reports = std::vector<std::string>;

// Writes down what it hears, under its name, each transaction by itself.
class Listener final : public SKPaymentTransactionObserver {
public:
    Listener(Reports& journal, std::string name, bool wants = false)
        : journal_(journal), name_(std::move(name)), wants_(wants) {}

    void observe(SKPaymentQueue& queue) { registration = queue.addTransactionObserver(*this); }

    void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override {
        static constexpr const char* states[] = {"open", "bought", "failed", "restored", "deferred"};
        for (const auto& transaction : transactions)
            note(states[static_cast<int>(transaction->transactionState())], transaction->payment());
        heard.insert(heard.end(), transactions.begin(), transactions.end());
        if (onUpdate) onUpdate(queue, transactions);
    }
    void removedTransactions(SKPaymentQueue&, const Transactions& transactions) override {
        for (const auto& transaction : transactions) note("removed", transaction->payment());
    }
    void restoreCompletedTransactionsFinished(SKPaymentQueue&) override {
        journal_.push_back(name_ + " done");
    }
    void restoreCompletedTransactionsFailedWithError(SKPaymentQueue&, const std::exception_ptr&) override {
        journal_.push_back(name_ + " refused");
    }
    bool shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>& payment,
                               const std::shared_ptr<SKProduct>&) override {
        note("asked", *payment);
        return wants_;
    }

    std::function<void(SKPaymentQueue& queue, const Transactions& transactions)> onUpdate;
    Transactions heard;
    std::unique_ptr<PaymentObserverRegistration> registration;

private:
    void note(const char* what, const SKPayment& payment) {
        journal_.push_back(name_ + " " + what + " " + payment.productIdentifier());
    }

    Reports& journal_;
    const std::string name_;
    const bool wants_;
};

template <class Harness>
class PaymentQueueContract : public PortContract<Harness> {
protected:
    SKPaymentQueue& queue() { return *this->ports().paymentQueue; }
    // What is written down while everything ran.
    Reports news() {
        // What runs may post what follows: no chain here is longer.
        for (int round = 0; round < 20; ++round) this->turn();
        return std::exchange(journal_, {});
    }

    Reports journal_;
    Listener a_{journal_, "a"}, b_{journal_, "b", true};
};
TYPED_TEST_SUITE(PaymentQueueContract, StoreHarnesses);

TYPED_TEST(PaymentQueueContract, DeliversToAllInOrderOnMainAndNeverInsideTheCall) {
    this->a_.observe(this->queue());
    this->b_.observe(this->queue());
    this->a_.onUpdate = [&](auto&, auto&) { EXPECT_TRUE(this->mainQueue()->isCurrent()); };
    this->harness().purchase({"gold"});
    EXPECT_THAT(this->journal_, IsEmpty());

    EXPECT_THAT(this->news(), ElementsAre("a bought gold", "b bought gold"));
    EXPECT_EQ(this->a_.heard, this->b_.heard); // the same objects
    EXPECT_EQ(this->queue().transactions(), this->a_.heard);
    EXPECT_TRUE(this->a_.heard[0]->transactionIdentifier() && this->a_.heard[0]->transactionDate());
}

TYPED_TEST(PaymentQueueContract, DeliversTheUnfinishedOnceToWhoeverArrivesAndAfterARelaunch) {
    this->harness().purchase({"gold", "silver", "gold"});
    this->a_.observe(this->queue());
    EXPECT_THAT(this->journal_, IsEmpty());
    EXPECT_THAT(this->news(), ElementsAre("a bought gold", "a bought silver", "a bought gold"));

    this->queue().finishTransaction(*this->a_.heard[0]);
    this->queue().finishTransaction(*this->a_.heard[2]);
    EXPECT_THAT(this->news(), ElementsAre("a removed gold", "a removed gold"));
    this->b_.observe(this->queue());
    EXPECT_THAT(this->news(), ElementsAre("b bought silver"));

    this->relaunch();
    this->a_.onUpdate = [](SKPaymentQueue& queue, const Transactions& batch) {
        queue.finishTransaction(*batch[0]); // the others are still given the same snapshot
    };
    this->a_.observe(this->queue());
    this->b_.observe(this->queue());
    EXPECT_THAT(this->news(),
                ElementsAre("a bought silver", "b bought silver", "a removed silver", "b removed silver"));
    EXPECT_THAT(this->queue().transactions(), IsEmpty());
}

TYPED_TEST(PaymentQueueContract, FinishesOnceQuietlyAndNeverWhatIsStillPurchasing) {
    this->a_.observe(this->queue());
    this->harness().holdNextPayment();
    this->queue().addPayment(std::make_shared<SKPayment>("gold"));
    this->harness().purchase({"silver"});
    EXPECT_THAT(this->news(), ElementsAre("a open gold", "a bought silver"));

    EXPECT_THROW(this->queue().finishTransaction(*this->a_.heard[0]), NSError);
    this->queue().finishTransaction(*this->a_.heard[1]);
    this->queue().finishTransaction(*this->a_.heard[1]);
    EXPECT_THAT(this->news(), ElementsAre("a removed silver"));
}

TYPED_TEST(PaymentQueueContract, AnswersPaymentsRestoresAndPromotionsAsTransactions) {
    this->a_.observe(this->queue());
    this->queue().addPayment(std::make_shared<SKPayment>("gold"));
    EXPECT_THAT(this->news(), ElementsAre("a open gold", "a bought gold"));
    this->harness().failNextPayment();
    this->queue().addPayment(std::make_shared<SKPayment>("gold"));
    EXPECT_THAT(this->news(), ElementsAre("a open gold", "a failed gold"));
    EXPECT_TRUE(this->a_.heard.back()->error());

    this->queue().restoreCompletedTransactions();
    EXPECT_THAT(this->news(), ElementsAre("a restored silver", "a done"));
    EXPECT_TRUE(this->a_.heard.back()->originalTransactionIdentifier());
    this->harness().failNextRestore();
    this->queue().restoreCompletedTransactions();
    EXPECT_THAT(this->news(), ElementsAre("a refused"));

    this->harness().promote("silver");
    EXPECT_THAT(this->news(), ElementsAre("a asked silver")); // and nobody wants it
    this->b_.observe(this->queue());
    this->news();
    this->harness().promote("silver");
    EXPECT_THAT(this->news(), ElementsAre("a asked silver", "b asked silver", "a open silver",
                                          "b open silver", "a bought silver", "b bought silver"));
}

TYPED_TEST(PaymentQueueContract, TellsNothingMoreOnceARegistrationHasEndedEvenInsideADelivery) {
    this->a_.observe(this->queue());
    this->b_.observe(this->queue());
    this->a_.onUpdate = [&](auto&, auto&) {
        this->b_.registration.reset(); // before its turn
        this->a_.registration.reset();
    };
    this->harness().purchase({"gold"});
    this->harness().purchase({"silver"});
    EXPECT_THAT(this->news(), ElementsAre("a bought gold"));
}

TYPED_TEST(PaymentQueueContract, EndsARegistrationOnAnotherThreadOnlyAfterADeliveryToIt) {
    std::atomic<bool> isInside{false};
    std::optional<bool> endedInside;
    std::thread other;
    this->a_.observe(this->queue());
    this->a_.onUpdate = [&](auto&, auto&) {
        isInside = true;
        std::atomic<bool> hasBegun{false};
        other = std::thread([&] {
            hasBegun = true;
            this->a_.registration.reset();
            endedInside = isInside.load();
        });
        while (!hasBegun) std::this_thread::yield();
        for (int i = 0; i < 1000; ++i) std::this_thread::yield(); // time to get it wrong
        isInside = false;
    };
    this->harness().purchase({"gold"});
    this->news();
    other.join();
    EXPECT_EQ(endedInside, false);
}

TYPED_TEST(PaymentQueueContract, AnswersWhatIsAskedOfTheStoreOnceOnItsQueueUnlessLetGo) {
    Reports& heard = this->journal_;
    const auto ask = [&] {
        return this->ports().storeRequests->products(
            {"gold", "unknown"}, this->mainQueue(),
            [&](const StoreRequests::Products& products, const std::exception_ptr& error) {
                heard.push_back(error ? "error" : std::to_string(products.size()));
            });
    };
    const auto kept = ask();
    EXPECT_THAT(heard, IsEmpty());
    EXPECT_TRUE(this->runUntil([&] { return !heard.empty(); }));
    this->harness().failNextProducts();
    const auto failing = ask();
    EXPECT_TRUE(this->runUntil([&] { return heard.size() == 2; }));

    ask().reset();
    EXPECT_THAT(this->news(), ElementsAre("1", "error"));
}

template <class Harness>
class SharedPaymentQueueContract : public PaymentQueueContract<Harness> {};
TYPED_TEST_SUITE(SharedPaymentQueueContract, LocalStoreHarnesses);

TYPED_TEST(SharedPaymentQueueContract, HandsATransactionToOneLivingProcessAtATime) {
    auto other = this->launchAnother();
    auto& otherQueue = *other->ports().paymentQueue;
    const auto runBoth = [&] {
        for (int round = 0; round < 20; ++round) {
            bool hasRun = false;
            other->ports().queues->main()->async([&] { hasRun = true; });
            ASSERT_TRUE(this->harness().runUntil(*other, [&] { return hasRun; }));
            this->turn();
        }
    };
    this->harness().holdNextPayment();
    otherQueue.addPayment(std::make_shared<SKPayment>("gold"));
    this->harness().purchase({"silver"});
    this->b_.observe(otherQueue);
    runBoth();
    EXPECT_THAT(std::exchange(this->journal_, {}), ElementsAre("b open gold", "b bought silver"));

    this->a_.observe(this->queue());
    this->harness().promote("gold");
    this->queue().addPayment(std::make_shared<SKPayment>("gold"));
    runBoth();
    const auto askedBoth = std::exchange(this->journal_, {});
    EXPECT_EQ(std::count(askedBoth.begin(), askedBoth.end(), "a asked gold") +
                  std::count(askedBoth.begin(), askedBoth.end(), "b asked gold"),
              1);
    EXPECT_EQ(std::count(askedBoth.begin(), askedBoth.end(), "a bought gold"), 1);
    EXPECT_EQ(std::count(askedBoth.begin(), askedBoth.end(), "b bought gold"), 0);
    EXPECT_EQ(this->queue().transactions().size(), 1u);

    this->b_.registration.reset();
    other.reset(); // what was cut off there goes on here
    EXPECT_TRUE(this->runUntil([&] { return this->journal_.size() >= 3; }));
    EXPECT_THAT(this->news(), ElementsAre("a open gold", "a bought silver", "a bought gold"));
}

} // namespace corvantile::PaymentQueueContractTest
