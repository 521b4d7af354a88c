#pragma once

#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "Corvantile/Plugin/Products/ConsumablePlugin.hpp"
#include "Corvantile/Plugin/Products/SKProductPromoPlugin.hpp"
#include "Corvantile/Plugin/Products/SKProductRequestPlugin.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantileReactive/DisposeBag.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"

#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvantile {

// An app with every plug-in of storage, analytics and purchases, launched on the current platform.
class WholeHost {
public:
    explicit WholeHost(std::shared_ptr<AnalyticComponent> sink, const std::vector<std::string>& products) {
        const auto application = UIApplication::shared();
        const auto router = std::make_shared<AnalyticPlugin>();
        const auto database = std::make_shared<DatabasePlugin>();
        std::vector<IAPReceiptPlugin::Product> sold;
        sold.reserve(products.size());
        for (const auto& product : products) sold.push_back({product});
        using Plugins = PluggableApplicationDelegate::Plugins;
        application->setDelegate(std::make_shared<PluggableApplicationDelegate>(Plugins{
            std::make_shared<UserPreference>(std::make_shared<UserDefaultsDatabase>()), database, router,
            std::make_shared<FirstDatePlugin>(), std::make_shared<AdjustPlugin>("benchbench12", true),
            std::make_shared<ConsumablePlugin>(std::vector<std::string>()),
            std::make_shared<SKProductPromoPlugin>(), std::make_shared<SKProductRequestPlugin>(products),
            std::make_shared<IAPReceiptPlugin>(std::move(sold)),
            std::make_shared<IAPReceiptTrackingPlugin>()}));
        router->registerComponents({std::move(sink)});
        bag_.insert(database->isLoaded().subscribe([this](bool isLoaded) { isLoaded_ = isLoaded; }));
        static_cast<void>(application->delegate()->didFinishLaunchingWithOptions(*application, {}));
        application->delegate()->didBecomeActive(*application);
    }

    [[nodiscard]] bool isLoaded() const { return isLoaded_; }

private:
    std::atomic<bool> isLoaded_{false};
    rx::DisposeBag bag_;
};

} // namespace corvantile
