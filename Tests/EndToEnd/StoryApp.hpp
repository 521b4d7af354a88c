#pragma once

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlatform/Store/SKPayment.hpp"
#include "Tests/Corvantile/RecordingAnalytics.hpp"

// The app of the story: all that has to do with purchases, and a back end of its own beside the SDK.
namespace corvantile {

constexpr const char* storyCatalogue = R"({"version": {"major": 4, "minor": 0},
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
             "recurringSubscriptionPeriod": "P1Y", "subscriptionGroupID": "2"}]}]})";

// The plug-in that hears of a purchase first. What `consumables` finishes the records do not see any more,
// whichever thread reads the receipt.
enum class FirstToHear { consumables, records };

// Makes the app on the current platform and launches it.
inline void launchStoryApp(const std::shared_ptr<RecordingSink>& backEnd,
                           FirstToHear first = FirstToHear::consumables) {
    const auto router = std::make_shared<AnalyticPlugin>();
    const auto firstDate = std::make_shared<FirstDatePlugin>();
    const auto adjust = std::make_shared<AdjustPlugin>("storystory12", true);
    std::shared_ptr<ConsumablePlugin> consumables;
    const auto makeConsumables = [&] {
        consumables = std::make_shared<ConsumablePlugin>(std::vector<std::string>{"gems"});
    };
    if (first == FirstToHear::consumables) makeConsumables();
    const auto records = std::make_shared<IAPReceiptPlugin>(
        std::vector<IAPReceiptPlugin::Product>{{"pro", "plan"}, {"cloud"}, {"themes"}, {"gems"}});
    if (!consumables) makeConsumables();
    const auto tracking = std::make_shared<IAPReceiptTrackingPlugin>();
    const auto application = UIApplication::shared();
    application->setDelegate(std::make_shared<PluggableApplicationDelegate>(
        PluggableApplicationDelegate::Plugins{router, firstDate, adjust, consumables, records, tracking}));
    consumables->consumableProducts().subscribe([backEnd](const std::vector<std::string>& products) {
        for (const auto& product : products) backEnd->note("consumes " + product);
    });
    using Tokens = AdjustAnalyticComponent::EventTokens;
    // The back end comes last: what it has, the SDK has.
    router->registerComponents(
        {std::make_shared<AdjustAnalyticComponent>(Tokens{{"trial_subscribe_plan", "trial1"},
                                                          {"renew_plan", "renew1"},
                                                          {"subscribe_themes", "theme1"},
                                                          {"enter_grace_period", "grace1"}}),
         backEnd});
    static_cast<void>(application->delegate()->didFinishLaunchingWithOptions(*application, {}));
    application->delegate()->didBecomeActive(*application);
}

} // namespace corvantile
