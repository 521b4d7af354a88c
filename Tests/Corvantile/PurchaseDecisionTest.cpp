#include "Corvantile/Plugin/Analytic/PurchaseDecision.hpp"

#include "Tests/Corvantile/PurchaseFakes.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace corvantile {
namespace {

TEST(PurchaseDecision, FollowsFromARecordItsPlaceAndTheTime) {
    const auto trial = asTrial(bought(1, 1, 1));
    const auto paid = bought(1, 1, 1);
    const auto oneTime = bought(1, 1, 1, 0);
    auto withoutExpiry = paid;
    withoutExpiry.expiresDate.reset();
    auto laterWithoutExpiry = bought(2, 1, 2);
    laterWithoutExpiry.expiresDate.reset();
    const auto second = bought(2, 1, 2, 8);
    const auto third = bought(3, 1, 3);

    const struct {
        const char* what;
        std::vector<ReceiptInfo> records;
        PurchaseKind kind; // of the last one
        double today = 9;
    } cases[] = {
        {"a trial that does not expire", {asTrial(oneTime)}, PurchaseKind::trial},
        {"a paid first period, long over", {paid}, PurchaseKind::subscription, 999},
        {"no expiry at all", {withoutExpiry}, PurchaseKind::subscription},
        {"the expiry that stands for none", {oneTime}, PurchaseKind::oneTimePurchase},
        {"right after a trial", {trial, second}, PurchaseKind::trialConversion},
        {"two after a trial", {trial, second, third}, PurchaseKind::renewal},
        {"right after a paid period", {paid, second}, PurchaseKind::renewal},
        {"the first purchase is missing", {second}, PurchaseKind::renewal},
        {"a trial that is no first purchase", {asTrial(second), third}, PurchaseKind::trialConversion},
        {"a first purchase out of place", {trial, bought(2, 2, 2)}, PurchaseKind::subscription},
        {"the last moment", {trial, second}, PurchaseKind::expired, 10},
        {"later, without expiry", {paid, laterWithoutExpiry}, PurchaseKind::expired},
        {"later, does not expire", {paid, bought(2, 1, 2, 0)}, PurchaseKind::expired},
    };
    for (const auto& [what, records, kind, today] : cases)
        EXPECT_EQ(decidePurchase({"", pro(), records}, records.size() - 1, Date{today * day}).kind, kind)
            << what;
    EXPECT_EQ(decidePurchase({"gold", pro(), {trial}}, 0, Date{0}).name, "trial_subscribe_pro");
}

TEST(PurchaseDecision, IsPreparedFromTheFirstDateOnFirstPurchaseFirst) {
    const auto sameDay = [](std::int64_t transaction) { return bought(transaction, 1, 5); };
    const std::vector<ProductCategory> categories = {
        {"a", pro(), {bought(7, 1, 9), bought(1, 1, 4.999), sameDay(3), sameDay(2), bought(8, 1, 7)}},
        {"b", pro(), {bought(9, 9, 1)}}};

    const auto prepared = preparePurchases(categories, Date{5 * day});

    ASSERT_EQ(prepared.size(), 2u);
    EXPECT_EQ(prepared[0].identifier, "a");
    EXPECT_EQ(prepared[0].product, categories[0].product);
    EXPECT_EQ(prepared[0].receipts, (std::vector{sameDay(2), sameDay(3), bought(8, 1, 7), bought(7, 1, 9)}));
    EXPECT_TRUE(prepared[1].receipts.empty());
}

} // namespace
} // namespace corvantile
