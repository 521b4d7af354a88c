#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileTest/ForEachSeed.hpp"
#include "Tests/CorvantileLocalStore/StoreFixture.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace corvantile::RandomWalkTest {

using State = SKPaymentTransactionState;
using Identifiers = std::set<std::string>;

// Hears what the store says in one launch, and wants every promoted product.
class Witness final : public SKPaymentTransactionObserver {
public:
    void updatedTransactions(SKPaymentQueue&, const Transactions& batch) override {
        for (const auto& transaction : batch) {
            EXPECT_TRUE(once.insert(transaction.get()).second) << "delivered twice in one launch";
            heard.push_back(transaction);
        }
    }
    bool shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>&,
                               const std::shared_ptr<SKProduct>&) override {
        return true;
    }

    std::set<const SKPaymentTransaction*> once;
    Transactions heard;
    std::unique_ptr<PaymentObserverRegistration> registration;
};

class Walk {
public:
    explicit Walk(std::uint64_t seed) : random_(seed), options_{.seed = seed} {
        options_.localStore = TestStoreOptions{.catalogue = fileText(CORVANTILE_SAMPLE_CATALOGUE)};
        launch();
    }

    void step() {
        const std::vector<std::function<void()>> acts = {
            [&] { queue().addPayment(std::make_shared<SKPayment>(product())); },
            [&] { queue().addPayment(std::make_shared<SKPayment>(product())); },
            [&] { store().buyElsewhere(product()); },
            [&] { store().failNextPayment(product(), SKErrorCode::paymentCancelled); },
            [&] { store().deferNextPayment(product()); },
            [&] { store().holdNextPayment(product()); },
            [&] { store().approve(product()); },
            [&] { store().decline(product()); },
            [&] { queue().restoreCompletedTransactions(); },
            [&] { store().refund(product()); },
            [&] { store().promote(product()); },
            [&] { store().setRenews(product(), draw(2) == 0); },
            [&] { store().setBillingFails(product(), draw(2) == 0); },
            [&] { store().advance(std::chrono::hours(draw(24 * 40))); },
            [&] { platform_->advance(std::chrono::hours(draw(24 * 40))); },
            [&] { finishSome(); },
            [&] { finishSome(); },
            [&] { platform_->runUntilIdle(); },
            [&] { platform_->runUntilIdle(); },
            [&] { relaunch(false); },
            [&] { relaunch(true); },
        };
        try {
            acts[draw(acts.size())]();
        } catch (const NSError& error) {
            EXPECT_EQ(error.domain(), localStoreErrorDomain); // not possible just now
        }
        check();
    }

private:
    std::size_t draw(std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(random_);
    }
    std::string product() {
        static const auto catalogue = sampleCatalogue();
        return catalogue.products()[draw(catalogue.products().size())].identifier;
    }
    SKPaymentQueue& queue() { return *platform_->ports().paymentQueue; }
    LocalStore& store() { return platform_->localStore(); }

    void launch() {
        platform_ = TestPlatform::launch(device_, options_);
        witness_ = std::make_unique<Witness>();
        witness_->registration = queue().addTransactionObserver(*witness_);
    }

    void relaunch(bool isKilled) {
        const auto waiting = purchasedIn(queue().transactions());
        if (isKilled) platform_->kill();
        witness_.reset();
        platform_.reset();
        launch();
        platform_->runUntilIdle();
        const auto delivered = purchasedIn(witness_->heard);
        EXPECT_TRUE(std::includes(delivered.begin(), delivered.end(), waiting.begin(), waiting.end()))
            << "a transaction was lost";
    }

    static Identifiers purchasedIn(const SKPaymentQueue::Transactions& transactions) {
        Identifiers found;
        for (const auto& transaction : transactions)
            if (transaction->transactionState() == State::purchased)
                found.insert(*transaction->transactionIdentifier());
        return found;
    }

    void finishSome() {
        platform_->runUntilIdle(); // so that no batch is under way that was made before
        for (const auto& transaction : queue().transactions()) {
            if (draw(2) == 0 || transaction->transactionState() == State::purchasing) continue;
            queue().finishTransaction(*transaction);
            if (transaction->transactionState() != State::deferred && transaction->transactionIdentifier())
                finished_.insert(*transaction->transactionIdentifier());
        }
        judged_ = witness_->heard.size();
        if (draw(4) == 0) relaunch(true);
    }

    void check() {
        auto& heard = witness_->heard;
        if (heard.size() < judged_) judged_ = 0; // another launch
        for (; judged_ < heard.size(); ++judged_)
            if (const auto& identifier = heard[judged_]->transactionIdentifier()) {
                EXPECT_FALSE(finished_.contains(*identifier)) << "delivered after it was finished";
            }
        const auto now = store().now();
        EXPECT_GE(now, latest_);
        latest_ = now;
        if (++steps_ % 5 == 0) checkReceipt();
    }

    // What was purchased and not finished waits in the queue; everything but consumables that were finished
    // stands in the receipt.
    void checkReceipt() {
        Identifiers waiting, unfinished, shown, listed;
        for (const auto& transaction : store().transactions())
            if (transaction.state == State::purchased && !transaction.originalIdentifier)
                waiting.insert(*transaction.identifier);
        for (const auto& purchase : store().purchases()) {
            EXPECT_EQ(purchase.isFinished, finished_.contains(purchase.identifier));
            if (!purchase.isFinished) unfinished.insert(purchase.identifier);
            if (!purchase.isFinished || purchase.kind != ProductKind::consumable)
                shown.insert(purchase.identifier);
        }
        EXPECT_EQ(waiting, unfinished);
        const auto receipt = nlohmann::json::parse(store().receipt().value_or("{}"));
        if (!receipt.empty())
            for (const auto& row : receipt.at("latest_receipt_info")) listed.insert(row.at("transaction_id"));
        EXPECT_EQ(listed, shown);
    }

    std::mt19937_64 random_;
    TestOptions options_;
    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_;
    std::unique_ptr<Witness> witness_;
    Identifiers finished_;
    std::size_t judged_ = 0;
    int steps_ = 0;
    Date latest_{-1e12};
};

TEST(LocalStoreWalk, LosesNothingRepeatsNothingAndAgreesWithItsReceipt) {
    forEachSeed(
        20,
        [](std::uint64_t seed) {
            Walk walk(seed);
            for (int step = 0; step < 100 && !testing::Test::HasFailure(); ++step) walk.step();
        },
        [] { return testing::Test::HasFailure(); });
}

} // namespace corvantile::RandomWalkTest
