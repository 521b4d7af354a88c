#include "Corvantile/DebugPlugin.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "CorvantilePlay/detail/Kinds/Kinds.hpp"
#include "CorvantilePlay/detail/Kinds/RecordingSink.hpp"

namespace corvantile::tool {

namespace {

PlayRegistry::MakePlugIn readDebugPlugin(const PlayConfiguration& configuration) {
    configuration.allow({"debug", "enableDryRun"});
    const bool debug = configuration.boolean("debug", false);
    const bool enableDryRun = configuration.boolean("enableDryRun", false);
    return [=](const PlayRegistry::LaunchSwitches& switches) {
        return std::make_shared<DebugPlugin>(debug || switches.debug || switches.dryRun,
                                             enableDryRun || switches.dryRun);
    };
}

PlayRegistry::Sink ignoring(const std::vector<std::string>& names, PlayRegistry::Sink sink) {
    for (const auto& name : names) sink->ignore({name});
    return sink;
}

PlayRegistry::MakeSink readConsoleComponent(const PlayConfiguration& configuration) {
    configuration.allow({});
    return [](const PlayRegistry::SinkSettings& sink, PlayReporter&) {
        return ignoring(sink.ignoredEventNames, std::make_shared<ConsoleComponent>());
    };
}

PlayRegistry::MakeSink readRecordingSink(const PlayConfiguration& configuration) {
    configuration.allow({});
    return [](const PlayRegistry::SinkSettings& sink, PlayReporter& reporter) {
        return ignoring(sink.ignoredEventNames, std::make_shared<RecordingSink>(sink.name, reporter));
    };
}

} // namespace

void addCoreKinds(PlayRegistry& registry) {
    registry.addPlugIn({.name = "DebugPlugin", .read = readDebugPlugin});
    registry.addPlugIn({.name = "AnalyticPlugin",
                        .offers = {PlayRegistry::service<AnalyticPluggable>()},
                        .read = readPlain<AnalyticPlugin>});
    registry.addSink({"ConsoleComponent", readConsoleComponent});
    registry.addSink({"RecordingSink", readRecordingSink});
}

} // namespace corvantile::tool
