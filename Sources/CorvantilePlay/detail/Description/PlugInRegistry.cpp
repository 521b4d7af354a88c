#include "CorvantilePlay/detail/Description/PlugInRegistry.hpp"

#include "Corvantile/DebugPlugin.hpp"
#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Kinds/AttributionKinds.hpp"
#include "CorvantilePlay/detail/Kinds/PurchaseKinds.hpp"
#include "CorvantilePlay/detail/Kinds/RecordingSink.hpp"
#include "CorvantilePlay/detail/Kinds/StorageStreams.hpp"

#include <algorithm>

namespace corvantile::tool {

namespace {

MakePlugIn readDebugPlugin(const DescriptionObject& configuration) {
    configuration.allow({"debug", "enableDryRun"});
    const bool debug = configuration.boolean("debug", false);
    const bool enableDryRun = configuration.boolean("enableDryRun", false);
    return [=](const LaunchSwitches& switches) {
        return std::make_shared<DebugPlugin>(debug || switches.debug || switches.dryRun,
                                             enableDryRun || switches.dryRun);
    };
}

MakePlugIn readUserPreference(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const LaunchSwitches&) {
        return std::make_shared<UserPreference>(std::make_shared<UserDefaultsDatabase>());
    };
}

// For a kind without configuration.
template <class PlugIn>
MakePlugIn readPlain(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const LaunchSwitches&) { return std::make_shared<PlugIn>(); };
}

std::shared_ptr<AnalyticComponent> ignoring(const std::vector<std::string>& names,
                                            std::shared_ptr<AnalyticComponent> sink) {
    for (const auto& name : names) sink->ignore({name});
    return sink;
}

MakeSink readConsoleComponent(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const SinkDescription& sink, Reporter&) {
        return ignoring(sink.ignoredEventNames, std::make_shared<ConsoleComponent>());
    };
}

MakeSink readRecordingSink(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const SinkDescription& sink, Reporter& reporter) {
        return ignoring(sink.ignoredEventNames, std::make_shared<RecordingSink>(sink.name, reporter));
    };
}

} // namespace

std::vector<std::string> PlugInRegistry::offering(const std::string& service) const {
    std::vector<std::string> names;
    for (const auto& kind : plugIns)
        if (std::any_of(kind.offers.begin(), kind.offers.end(),
                        [&](const Service& offered) { return offered.name == service; }))
            names.push_back(kind.name);
    return names;
}

PlugInRegistry frameworkRegistry() {
    const auto name = [](std::string_view typeName) { return std::string(typeName); };
    return {.plugIns = {{"DebugPlugin", {}, {}, readDebugPlugin},
                        {"AnalyticPlugin", {service<AnalyticPluggable>()}, {}, readPlain<AnalyticPlugin>},
                        {"UserPreference",
                         {service<UserPreferenceProtocol>()},
                         {},
                         readUserPreference,
                         followUserPreference},
                        {"DatabasePlugin",
                         {service<DatabasePluggable>()},
                         {name(UserPreferenceProtocol::typeName)},
                         readPlain<DatabasePlugin>,
                         followDatabasePlugin},
                        {"FirstDatePlugin",
                         {service<FirstDatePluggable>()},
                         {name(AnalyticPluggable::typeName)},
                         readPlain<FirstDatePlugin>,
                         followFirstDatePlugin},
                        adjustPlugin(),
                        adNetworkPlugin(),
                        productRequestPlugin(),
                        productPromoPlugin(),
                        consumablePlugin(),
                        receiptPlugin(),
                        receiptTrackingPlugin()},
            .sinks = {{"ConsoleComponent", readConsoleComponent},
                      {"RecordingSink", readRecordingSink},
                      adjustAnalyticComponent()}};
}

} // namespace corvantile::tool
