#include "Tools/corvantile/Description/PlugInRegistry.hpp"

#include "Corvantile/DebugPlugin.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "Tools/corvantile/RecordingSink.hpp"

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

MakePlugIn readAnalyticPlugin(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const LaunchSwitches&) { return std::make_shared<AnalyticPlugin>(); };
}

MakeSink readConsoleComponent(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const std::string&, Reporter&) { return std::make_shared<ConsoleComponent>(); };
}

MakeSink readRecordingSink(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const std::string& name, Reporter& reporter) {
        return std::make_shared<RecordingSink>(name, reporter);
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
    return {.plugIns = {{"DebugPlugin", {}, {}, readDebugPlugin},
                        {"AnalyticPlugin", {service<AnalyticPluggable>()}, {}, readAnalyticPlugin}},
            .sinks = {{"ConsoleComponent", readConsoleComponent}, {"RecordingSink", readRecordingSink}}};
}

} // namespace corvantile::tool
