#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"
#include "Corvantile/Plugin/Products/SKProductPromoPlugin.hpp"
#include "Corvantile/Plugin/Products/SKProductRequestPlugin.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Kinds/Kinds.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/StoreText.hpp"

#include <string>
#include <vector>

namespace corvantile::tool {

namespace {

// For people the texts in one line, for programs the values.
struct PublishedList {
    Names texts;
    EventValue::List values;

    [[nodiscard]] Publication publication() const { return {listed(texts), values}; }
};

Publication ofFlag(bool flag) { return {flag ? "true" : "false", flag}; }

Publication ofError(const std::exception_ptr& error) {
    if (!error) return {"none", nullptr};
    return {localizedDescription(error), localizedDescription(error)};
}

Publication ofProducts(const std::vector<std::shared_ptr<SKProduct>>& products) {
    PublishedList list;
    for (const auto& product : products) {
        const auto currency = product->priceLocale().currencyCode.value_or("");
        list.texts.push_back(product->productIdentifier() + " " + product->price().description() + " " +
                             currency);
        list.values.push_back(EventValue::Map{
            {"product", product->productIdentifier()}, {"price", product->price()}, {"currency", currency}});
    }
    return list.publication();
}

Publication ofIdentifiers(const std::vector<std::string>& identifiers) {
    return {listed(identifiers), EventValue::List(identifiers.begin(), identifiers.end())};
}

Publication ofCategories(const std::vector<ProductCategory>& categories) {
    PublishedList list;
    for (const auto& [category, product, records] : categories) {
        const auto& name = product->productIdentifier();
        list.texts.push_back(name + " x " + std::to_string(records.size()));
        EventValue::List transactions;
        for (const auto& record : records)
            transactions.emplace_back(EventValue::Map{{"transaction", std::to_string(record.transactionID)}});
        list.values.push_back(EventValue::Map{
            {"category", category}, {"product", name}, {"transactions", std::move(transactions)}});
    }
    return list.publication();
}

Publication ofRenewals(const std::vector<RenewalInfo>& renewals) {
    PublishedList list;
    for (const auto& renewal : renewals) {
        EventValue::Map value{{"product", renewal.productID}};
        auto text = renewal.productID;
        if (renewal.willAutoRenew) {
            text += *renewal.willAutoRenew ? " renews" : " ends";
            value.emplace("willAutoRenew", *renewal.willAutoRenew);
        }
        if (renewal.gracePeriodExpiresDate) {
            text += ", in grace until " + describe(*renewal.gracePeriodExpiresDate);
            value.emplace("gracePeriodExpiresDate", *renewal.gracePeriodExpiresDate);
        }
        list.texts.push_back(std::move(text));
        list.values.emplace_back(std::move(value));
    }
    return list.publication();
}

Publication ofProblems(const IAPReceiptPlugin::Problems& problems) {
    PublishedList list;
    for (const auto& problem : problems) {
        list.texts.push_back(describe(problem));
        list.values.push_back(EventValue::Map{{"where", problem.where}, {"error", problem.what}});
    }
    return list.publication();
}

void followProductRequestPlugin(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter,
                                rx::DisposeBag& bag) {
    const auto request = std::dynamic_pointer_cast<SKProductRequestPluggable>(plugIn);
    Follower follower("SKProductRequestPlugin", reporter, bag);
    follower.follow("isLoading", request->isLoading(), ofFlag);
    follower.follow("products", request->products(), ofProducts);
    follower.follow("error", request->error(), ofError);
}

void followProductPromoPlugin(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter,
                              rx::DisposeBag& bag) {
    const auto promo = std::dynamic_pointer_cast<SKProductPromoPluggable>(plugIn);
    Follower follower("SKProductPromoPlugin", reporter, bag);
    follower.follow("isProductReady", promo->isProductReady(), ofFlag);
    follower.follow("isFinished", promo->isFinished(), ofFlag);
}

void followConsumablePlugin(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter, rx::DisposeBag& bag) {
    const auto consumables = std::dynamic_pointer_cast<ConsumablePluggable>(plugIn);
    Follower("ConsumablePlugin", reporter, bag)
        .follow("consumableProducts", consumables->consumableProducts(), ofIdentifiers);
}

void followReceiptPlugin(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter, rx::DisposeBag& bag) {
    const auto records = std::dynamic_pointer_cast<IAPReceiptPlugin>(plugIn);
    const auto isSome = [](const IAPReceiptPlugin::Problems& problems) { return !problems.empty(); };
    Follower follower("IAPReceiptPlugin", reporter, bag);
    follower.follow("problems", records->problems().filter(isSome), ofProblems);
    follower.follow("renewals", records->renewals(), ofRenewals);
    follower.follow("productCategories", records->productCategories(), ofCategories);
}

// For a kind whose one setting is a list of product identifiers.
template <class PlugIn>
PlayRegistry::MakePlugIn readProducts(const PlayConfiguration& configuration, const char* key) {
    configuration.allow({key});
    return [products = configuration.texts(key)](const PlayRegistry::LaunchSwitches&) {
        return std::make_shared<PlugIn>(products);
    };
}

PlayRegistry::MakePlugIn readProductRequestPlugin(const PlayConfiguration& configuration) {
    return readProducts<SKProductRequestPlugin>(configuration, "productIdentifiers");
}

PlayRegistry::MakePlugIn readConsumablePlugin(const PlayConfiguration& configuration) {
    return readProducts<ConsumablePlugin>(configuration, "consumableProductIDs");
}

PlayRegistry::MakePlugIn readReceiptPlugin(const PlayConfiguration& configuration) {
    return [products = readReceiptProducts(configuration)](const PlayRegistry::LaunchSwitches&) {
        return std::make_shared<IAPReceiptPlugin>(products);
    };
}

PlayRegistry::MakePlugIn readTrackingPlugin(const PlayConfiguration& configuration) {
    configuration.allow({"atLeastOnce"});
    using Delivery = IAPReceiptTrackingPlugin::Delivery;
    const auto delivery =
        configuration.boolean("atLeastOnce", false) ? Delivery::atLeastOnce : Delivery::atMostOnce;
    return [delivery](const PlayRegistry::LaunchSwitches&) {
        return std::make_shared<IAPReceiptTrackingPlugin>(delivery);
    };
}

} // namespace

std::vector<IAPReceiptPlugin::Product> readReceiptProducts(const PlayConfiguration& configuration) {
    configuration.allow({"products"});
    std::vector<IAPReceiptPlugin::Product> products;
    for (const auto& object : configuration.objects("products")) {
        object.allow({"identifier", "category"});
        products.push_back({object.text("identifier"), object.text("category", "")});
    }
    return products;
}

void addPurchaseKinds(PlayRegistry& registry) {
    registry.addPlugIn({.name = "SKProductRequestPlugin",
                        .offers = {PlayRegistry::service<SKProductRequestPluggable>()},
                        .read = readProductRequestPlugin,
                        .follow = followProductRequestPlugin});
    registry.addPlugIn({.name = "SKProductPromoPlugin",
                        .offers = {PlayRegistry::service<SKProductPromoPluggable>()},
                        .read = readPlain<SKProductPromoPlugin>,
                        .follow = followProductPromoPlugin});
    registry.addPlugIn({.name = "ConsumablePlugin",
                        .offers = {PlayRegistry::service<ConsumablePluggable>()},
                        .read = readConsumablePlugin,
                        .follow = followConsumablePlugin});
    registry.addPlugIn({.name = "IAPReceiptPlugin",
                        .offers = {PlayRegistry::service<IAPReceiptPluggable>()},
                        .read = readReceiptPlugin,
                        .follow = followReceiptPlugin});
    registry.addPlugIn(
        {.name = "IAPReceiptTrackingPlugin",
         .offers = {PlayRegistry::service<IAPReceiptTrackingPluggable>()},
         .needs = {AnalyticPluggable::typeName, FirstDatePluggable::typeName, IAPReceiptPluggable::typeName},
         .read = readTrackingPlugin});
}

} // namespace corvantile::tool
