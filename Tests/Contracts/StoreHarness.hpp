#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileTest/ScriptedStore.hpp"
#include "Tests/Contracts/Harness.hpp"

namespace corvantile {

// The scripted store as the payment queue's contract sees it. A store's harness launches a process of whose
// store "gold" and "silver" are products, and offers what is here.
class ScriptedStoreHarness : public TestHarness {
public:
    ScriptedStoreHarness() : TestHarness(TestOptions()) {
        device_.store().setProducts({product("gold"), product("silver")});
        device_.store().setRestorable({"silver"});
    }

    // Purchases of these products appear, one after the other.
    void purchase(const std::vector<std::string>& products) {
        SKPaymentQueue::Transactions batch;
        batch.reserve(products.size());
        for (const auto& product : products) batch.push_back(platform_->store().makeTransaction(product));
        platform_->store().deliver(batch);
    }
    // The next payment fails, or stays open.
    void failNextPayment() { platform_->store().answerNextPayment(SKPaymentTransactionState::failed); }
    void holdNextPayment() { platform_->store().answerNextPayment(SKPaymentTransactionState::purchasing); }
    // A restore gives back "silver"; the next one fails.
    void failNextRestore() { platform_->store().failNextRestore(SKErrorCode::paymentCancelled); }
    void failNextProducts() { platform_->store().failNextProducts(); }
    void promote(const std::string& identifier) { platform_->store().promote(product(identifier)); }

private:
    static std::shared_ptr<SKProduct> product(const std::string& identifier) {
        return std::make_shared<SKProduct>(identifier, NSDecimalNumber(), PriceLocale{"USD", "US"});
    }
};

// The local store of a platform.
template <class Harness>
class LocalStoreHarness : public Harness {
public:
    LocalStoreHarness() {
        this->store().buyElsewhere("silver"); // what a restore gives back
        for (const auto& transaction : this->store().transactions()) this->store().finish(transaction.number);
    }

    void purchase(const std::vector<std::string>& products) {
        for (const auto& product : products) this->store().buyElsewhere(product);
    }
    void failNextPayment() { this->store().failNextPayment("gold", SKErrorCode::paymentCancelled); }
    void holdNextPayment() { this->store().holdNextPayment("gold"); }
    void failNextRestore() { this->store().failRequests(1, SKErrorCode::paymentCancelled); }
    void failNextProducts() { this->store().failRequests(1, SKErrorCode::unknown); }
    void promote(const std::string& identifier) { this->store().promote(identifier); }
};

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
using StoreHarnesses =
    testing::Types<ScriptedStoreHarness, LocalStoreHarness<TestHarness>, LocalStoreHarness<DesktopHarness>>;
using LocalStoreHarnesses = testing::Types<LocalStoreHarness<TestHarness>, LocalStoreHarness<DesktopHarness>>;
#else
using StoreHarnesses = testing::Types<ScriptedStoreHarness, LocalStoreHarness<TestHarness>>;
using LocalStoreHarnesses = testing::Types<LocalStoreHarness<TestHarness>>;
#endif

} // namespace corvantile
