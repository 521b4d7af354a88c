#include "Tests/CorvantileLocalStore/StoreFixture.hpp"

#include <nlohmann/json.hpp>

namespace corvantile::StorePurchaseTest {

using State = SKPaymentTransactionState;

class StorePurchases : public testing::Test {
protected:
    std::string outcome(const std::string& product, int quantity = 1) {
        static constexpr const char* states[] = {"purchasing", "purchased", "failed", "restored", "deferred"};
        const auto transaction = shop.pay(product, quantity);
        std::string text = states[static_cast<int>(transaction.state)];
        if (transaction.failure) text += " " + std::to_string(static_cast<int>(transaction.failure->code));
        return text;
    }
    nlohmann::json receipt() { return nlohmann::json::parse(shop.store->receipt().value_or("null")); }

    StoreFixture shop{sampleCatalogue()};
    LocalStore& store = *shop.store;
};

TEST_F(StorePurchases, TurnOutAsSomebodyHasDecided) {
    EXPECT_EQ(outcome(coins, 10), "purchased");
    EXPECT_EQ(outcome(coins, 11), "failed 3");
    EXPECT_EQ(outcome(themes, 2), "failed 3");
    EXPECT_EQ(outcome("unheard.of"), "failed 5");
    store.failNextPayment(coins, SKErrorCode::paymentNotAllowed);
    EXPECT_EQ(outcome(themes), "purchased"); // it is for coins alone
    EXPECT_EQ(outcome(coins), "failed 4");
    EXPECT_EQ(outcome(coins), "purchased");
    store.setOffline(true);
    EXPECT_EQ(outcome(coins), "failed 7");
    EXPECT_THROW(store.restore(), NSError);
    EXPECT_THROW(static_cast<void>(store.products({coins})), NSError);
    store.setOffline(false);
    store.failRequests(1, SKErrorCode::unknown);
    EXPECT_THROW(static_cast<void>(store.products({coins})), NSError);
    EXPECT_EQ(store.products({coins, "unheard.of"}).size(), 1u);
}

TEST_F(StorePurchases, WaitForWhoeverHasToApproveThem) {
    store.deferNextPayment(coins);
    EXPECT_EQ(outcome(coins), "deferred");
    store.holdNextPayment(themes);
    EXPECT_EQ(outcome(themes), "purchasing");
    shop.launch();
    const auto waiting = shop.store->transactions();
    ASSERT_EQ(waiting.size(), 2u);
    EXPECT_THROW(shop.store->finish(waiting[0].number), NSError);

    shop.store->approve(coins);
    shop.store->decline(themes);
    EXPECT_EQ(shop.find(waiting[0].number).state, State::purchased);
    EXPECT_EQ(shop.find(waiting[1].number).failure->code, SKErrorCode::paymentCancelled);
    EXPECT_THROW(shop.store->approve(coins), NSError);
}

TEST_F(StorePurchases, AreRestoredUnlessConsumedRefundedOrStillWaiting) {
    shop.pay(coins);
    const auto first = shop.pay(themes);
    shop.pay(monthly);
    const auto restored = [&] {
        store.restore();
        std::vector<std::string> products;
        for (const auto& transaction : store.transactions())
            if (transaction.state == State::restored) {
                products.push_back(transaction.productIdentifier);
                store.finish(transaction.number);
            }
        return products;
    };
    EXPECT_THAT(restored(), IsEmpty());
    for (const auto& transaction : store.transactions()) store.finish(transaction.number);
    EXPECT_THAT(restored(), ElementsAre(themes, monthly));

    const auto again = shop.pay(themes); // nobody pays twice
    EXPECT_NE(again.identifier, first.identifier);
    EXPECT_EQ(again.originalIdentifier, first.identifier);
    store.finish(again.number);
    store.refund(themes);
    EXPECT_THROW(store.refund(themes), NSError);
    EXPECT_THAT(restored(), ElementsAre(monthly));
    EXPECT_EQ(shop.pay(themes).originalIdentifier, std::nullopt);
}

TEST_F(StorePurchases, StandInTheReceiptAsTheRealStoreWritesThem) {
    EXPECT_EQ(store.receipt(), std::nullopt);
    const auto coin = shop.pay(coins, 2);
    const auto trial = shop.pay(monthly);
    store.refund(*trial.identifier, true);
    const auto first = receipt()["latest_receipt_info"][0];
    EXPECT_EQ(first.dump(2), R"({
  "cancellation_date": "2024-01-31 10:00:00 Etc/GMT",
  "cancellation_date_ms": "1706695200000",
  "cancellation_date_pst": "2024-01-31 02:00:00 America/Los_Angeles",
  "cancellation_reason": "1",
  "expires_date": "2024-02-07 10:00:00 Etc/GMT",
  "expires_date_ms": "1707300000000",
  "expires_date_pst": "2024-02-07 02:00:00 America/Los_Angeles",
  "in_app_ownership_type": "PURCHASED",
  "is_in_intro_offer_period": "false",
  "is_trial_period": "true",
  "original_purchase_date": "2024-01-31 10:00:00 Etc/GMT",
  "original_purchase_date_ms": "1706695200000",
  "original_purchase_date_pst": "2024-01-31 02:00:00 America/Los_Angeles",
  "original_transaction_id": "200000000000002",
  "product_id": "com.example.sampleapp.pro.monthly",
  "purchase_date": "2024-01-31 10:00:00 Etc/GMT",
  "purchase_date_ms": "1706695200000",
  "purchase_date_pst": "2024-01-31 02:00:00 America/Los_Angeles",
  "quantity": "1",
  "subscription_group_identifier": "21300001",
  "transaction_id": "200000000000002",
  "web_order_line_item_id": "200000000000003"
})");
    EXPECT_EQ(receipt()["receipt"]["in_app"].size(), 2u);
    EXPECT_EQ(receipt()["receipt"]["in_app"][0]["quantity"], "2");
    store.finish(coin.number);
    EXPECT_EQ(receipt()["latest_receipt_info"].size(), 1u); // a finished consumable is gone

    shop.goTo("2024-07-01"); // summer time at the other end
    shop.pay(monthly);
    store.setBillingFails(monthly, true);
    shop.goTo("2024-08-02");
    const auto renewal = receipt()["pending_renewal_info"][0];
    EXPECT_EQ(renewal.dump(2), R"({
  "auto_renew_product_id": "com.example.sampleapp.pro.monthly",
  "auto_renew_status": "1",
  "expiration_intent": "2",
  "grace_period_expires_date": "2024-08-17 10:00:00 Etc/GMT",
  "grace_period_expires_date_ms": "1723888800000",
  "grace_period_expires_date_pst": "2024-08-17 03:00:00 America/Los_Angeles",
  "is_in_billing_retry_period": "1",
  "original_transaction_id": "200000000000002",
  "product_id": "com.example.sampleapp.pro.monthly"
})");
    store.setRenews(monthly, false);
    EXPECT_FALSE(receipt()["pending_renewal_info"][0].contains("grace_period_expires_date"));
}

TEST_F(StorePurchases, PassOverWhatCannotBeReadAndUseNoNumberTwice) {
    const auto before = shop.pay(coins);
    const auto rows = shop.storage->load();
    const auto aPurchase = *rows.lower_bound("purchase/");
    ASSERT_TRUE(shop.storage->commit({{"settings", "{"},
                                      {"purchase/900000000000000", "?"},
                                      {aPurchase.first, std::nullopt},
                                      {"purchase/1", aPurchase.second}, // whose key has changed
                                      {"future/thing", "left alone"}},
                                     {}));
    shop.launch();
    EXPECT_THAT(shop.store->purchases(), IsEmpty());

    const auto later = shop.pay(coins);
    EXPECT_GT(later.number, before.number);
    EXPECT_GT(*later.identifier, "900000000000000");
    EXPECT_EQ(shop.storage->load().at("future/thing"), "left alone");
}

} // namespace corvantile::StorePurchaseTest
