#pragma once

namespace corvantile::tool {

// A consumable, a product that lasts, and a monthly subscription with a week for nothing.
inline constexpr const char* sampleCatalogue = R"({
    "version": {"major": 2, "minor": 0},
    "settings": {"_locale": "en_US", "_storefront": "USA"},
    "products": [
        {"productID": "app.coins", "type": "Consumable", "displayPrice": "0.99"},
        {"productID": "app.themes", "type": "NonConsumable", "displayPrice": "9.99"}],
    "subscriptionGroups": [{"id": "1", "name": "Pro", "subscriptions": [
        {"productID": "app.pro", "type": "RecurringSubscription", "displayPrice": "4.99",
         "recurringSubscriptionPeriod": "P1M", "subscriptionGroupID": "1", "groupNumber": 1,
         "introductoryOffer": {"paymentMode": "free", "subscriptionPeriod": "P1W"}}]}]
})";

} // namespace corvantile::tool
