#include "Corvantile/Plugin/Analytic/detail/PurchaseDecision.hpp"

#include "Tests/Corvantile/PurchaseFakes.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile::PurchaseDecisionTest {

// The plain cases are those of the year of purchases, from end to end.
TEST(PurchaseDecision, FollowsFromARecordItsPlaceAndTheTime) {
    const auto trial = asTrial(bought(1, 1, 1));
    const auto paid = bought(1, 1, 1);
    auto withoutExpiry = paid;
    withoutExpiry.expiresDate.reset();
    auto laterWithoutExpiry = bought(2, 1, 2);
    laterWithoutExpiry.expiresDate.reset();
    const auto second = bought(2, 1, 2, 8);

    const struct {
        const char* what;
        std::vector<ReceiptInfo> records;
        PurchaseKind kind; // of the last one
        double today = 9;
    } cases[] = {
        {"a trial that does not expire", {asTrial(bought(1, 1, 1, 0))}, PurchaseKind::trial},
        {"a paid first period, long over", {paid}, PurchaseKind::subscription, 999},
        {"no expiry at all", {withoutExpiry}, PurchaseKind::subscription},
        {"the first purchase is missing", {second}, PurchaseKind::renewal},
        {"a trial that is no first purchase",
         {asTrial(second), bought(3, 1, 3)},
         PurchaseKind::trialConversion},
        {"a first purchase out of place", {trial, bought(2, 2, 2)}, PurchaseKind::subscription},
        {"the last moment", {trial, second}, PurchaseKind::expired, 10},
        {"later, without expiry", {paid, laterWithoutExpiry}, PurchaseKind::expired},
    };
    for (const auto& [what, records, kind, today] : cases)
        EXPECT_EQ(decidePurchase({"", pro(), records}, records.size() - 1, Date{today * oneDay}).kind, kind)
            << what;
    const auto abroad = decidePurchase({"gold", pro({}), {trial}}, 0, Date{0});
    EXPECT_EQ(abroad.name, "trial_subscribe_pro");
    EXPECT_EQ(abroad.currency, "");
    EXPECT_EQ(abroad.region, std::nullopt);
}

} // namespace corvantile::PurchaseDecisionTest
