#include "CorvantilePlay/detail/Kinds/PurchaseKinds.hpp"

#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"
#include "Corvantile/Plugin/Products/SKProductPromoPlugin.hpp"
#include "Corvantile/Plugin/Products/SKProductRequestPlugin.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlay/detail/Kinds/PurchaseStreams.hpp"

namespace corvantile::tool {

namespace {

// For a kind whose one setting is a list of product identifiers.
template <class PlugIn>
MakePlugIn readProducts(const DescriptionObject& configuration, const char* key) {
    configuration.allow({key});
    return [products = configuration.texts(key)](const LaunchSwitches&) {
        return std::make_shared<PlugIn>(products);
    };
}

MakePlugIn readProductRequestPlugin(const DescriptionObject& configuration) {
    return readProducts<SKProductRequestPlugin>(configuration, "productIdentifiers");
}

MakePlugIn readConsumablePlugin(const DescriptionObject& configuration) {
    return readProducts<ConsumablePlugin>(configuration, "consumableProductIDs");
}

MakePlugIn readProductPromoPlugin(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const LaunchSwitches&) { return std::make_shared<SKProductPromoPlugin>(); };
}

MakePlugIn readReceiptPlugin(const DescriptionObject& configuration) {
    return [products = readReceiptProducts(configuration)](const LaunchSwitches&) {
        return std::make_shared<IAPReceiptPlugin>(products);
    };
}

MakePlugIn readReceiptTrackingPlugin(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const LaunchSwitches&) { return std::make_shared<IAPReceiptTrackingPlugin>(); };
}

} // namespace

std::vector<IAPReceiptPlugin::Product> readReceiptProducts(const DescriptionObject& configuration) {
    configuration.allow({"products"});
    std::vector<IAPReceiptPlugin::Product> products;
    for (const auto& object : configuration.objects("products")) {
        object.allow({"identifier", "category"});
        products.push_back({object.text("identifier"), object.text("category", "")});
    }
    return products;
}

PlugInKind productRequestPlugin() {
    return {"SKProductRequestPlugin",
            {service<SKProductRequestPluggable>()},
            {},
            readProductRequestPlugin,
            followProductRequestPlugin};
}

PlugInKind productPromoPlugin() {
    return {"SKProductPromoPlugin",
            {service<SKProductPromoPluggable>()},
            {},
            readProductPromoPlugin,
            followProductPromoPlugin};
}

PlugInKind consumablePlugin() {
    return {"ConsumablePlugin",
            {service<ConsumablePluggable>()},
            {},
            readConsumablePlugin,
            followConsumablePlugin};
}

PlugInKind receiptPlugin() {
    return {"IAPReceiptPlugin", {service<IAPReceiptPluggable>()}, {}, readReceiptPlugin, followReceiptPlugin};
}

PlugInKind receiptTrackingPlugin() {
    return {"IAPReceiptTrackingPlugin",
            {service<IAPReceiptTrackingPluggable>()},
            {std::string(AnalyticPluggable::typeName), std::string(FirstDatePluggable::typeName),
             std::string(IAPReceiptPluggable::typeName)},
            readReceiptTrackingPlugin};
}

} // namespace corvantile::tool
