#include "CorvantilePlay/detail/Proof/PurchaseScenario.hpp"

namespace corvantile::tool {

const std::vector<ScenarioStage>& scenarioStages() {
    using enum ScenarioStage::Kind;
    // The store counts its identifiers from 200000000000001; a period of a subscription takes two.
    static const std::vector<ScenarioStage> stages{
        // A week free: a first purchase for nothing.
        {.kind = buy, .product = "pro", .records = {{"200000000000001", "trial_subscribe_pro", true, true}}},
        // What does not expire carries its price as revenue and is no subscription.
        {.kind = buy, .product = "gems", .records = {{"200000000000003", "subscribe_gems", false, true}}},
        // A first purchase that is paid.
        {.kind = buy, .product = "cloud", .records = {{"200000000000004", "subscribe_cloud", true, true}}},
        // The week is over, and the first month paid: that converts.
        {.kind = wait, .day = 8, .records = {{"200000000000006", "trial_conversion_pro", true, false}}},
        {.kind = buy, .product = "themes", .records = {{"200000000000008", "subscribe_themes", false, true}}},
        {.kind = validate,
         .product = "themes",
         .records = {{"validated_200000000000008", "ostrel_in_app_purchase", false, false}}},
        // The second month of both: two transactions are open in one pass. A renewal is an event and nothing
        // else.
        {.kind = wait,
         .day = 40,
         .records = {{"200000000000011", "renew_pro", false, false},
                     {"200000000000009", "renew_cloud", false, false}}},
        {.kind = stopRenewing, .product = "cloud"},
        // The third is not paid, of which no transaction tells: the app sees it in the receipt.
        {.kind = failBilling, .product = "pro"},
        {.kind = wait, .day = 72},
        {.kind = reopen, .beginsGracePeriod = true},
    };
    return stages;
}

std::string scenarioCatalogue() {
    return R"({"version": {"major": 4, "minor": 0},
 "settings": {"_storefront": "USA", "_locale": "en_US", "_billingGracePeriodEnabled": true},
 "products": [
  {"productID": "gems", "type": "Consumable", "displayPrice": "0.99"},
  {"productID": "themes", "type": "NonConsumable", "displayPrice": "9.99"}],
 "subscriptionGroups": [
  {"id": "1", "name": "Pro", "subscriptions": [
   {"productID": "pro", "type": "RecurringSubscription", "displayPrice": "4.99",
    "recurringSubscriptionPeriod": "P1M", "subscriptionGroupID": "1",
    "introductoryOffer": {"paymentMode": "free", "subscriptionPeriod": "P1W"}}]},
  {"id": "2", "name": "Cloud", "subscriptions": [
   {"productID": "cloud", "type": "RecurringSubscription", "displayPrice": "29.99",
    "recurringSubscriptionPeriod": "P1M", "subscriptionGroupID": "2"}]}]}
)";
}

const std::vector<std::string>& scenarioProducts() {
    static const std::vector<std::string> products{"pro", "cloud", "gems", "themes"};
    return products;
}

bool isPlainMarker(const KeychainDictionary& entry, const std::string& marker) {
    return entry == KeychainDictionary{{marker, true}};
}

std::string eventLine(const std::string& name) { return "event " + name; }
std::string subscriptionLine(const std::string& transaction) { return "subscription " + transaction; }

std::vector<std::string> linesOf(const ScenarioRecord& record) {
    std::vector<std::string> lines{eventLine(record.event)};
    if (record.isSubscription) lines.push_back(subscriptionLine(record.marker));
    if (record.countsIntoTotal) lines.push_back(eventLine(totalEvent));
    return lines;
}

} // namespace corvantile::tool
