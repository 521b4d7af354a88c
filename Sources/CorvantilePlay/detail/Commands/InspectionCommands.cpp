#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>
#include <string>

namespace corvantile::tool {

namespace {

void runLookup(Host& host, Arguments given) {
    auto& process = host.process();
    const auto& name = given[0].text;
    std::vector<PlayRegistry::Service> services;
    for (const auto& kind : host.app().registry.plugIns())
        services.insert(services.end(), kind.offers.begin(), kind.offers.end());
    const auto known =
        std::find_if(services.begin(), services.end(),
                     [&](const PlayRegistry::Service& service) { return service.name == name; });
    if (known == services.end()) {
        Names names;
        for (const auto& service : services) names.push_back(service.name);
        throw UsageError(unknownName("service", name, names));
    }
    const auto found = known->find();
    host.reporter().report("host", "lookup",
                           name + " → " + (found ? process.describePlugIn(*found) : "no plug-in offers it"),
                           {{"protocol", name}, {"found", found != nullptr}});
}

void runNetwork(Host& host) {
    static_cast<void>(host.process());
    const auto status = describe(NetworkReachability::shared()->networkStatus());
    host.reporter().report("network", "network", status, {{"network", status}});
}

void reportStatus(Host& host, const std::string& key, const std::string& value) {
    host.reporter().report("host", "status", key + ": " + value, {{"name", key}, {"value", value}});
}

std::string describeSink(const Sink& sink) {
    return sink.name + " (" + sink.kind + "), " +
           (sink.registrations == 0 ? "not registered"
                                    : "registered " + std::to_string(sink.registrations) + " x") +
           ", ignores " + listed(sink.component->ignoredEventNames());
}

void runStatus(Host& host) {
    reportStatus(host, "app",
                 host.app().name + " (" + host.app().bundleIdentifier + "), " +
                     std::string(describe(host.lifeCycle())));
    reportStatus(host, "state", host.stateFolder().string());
    const auto& attribution = host.device().attribution;
    const auto endpoint = withEnvironment(attribution).endpoint;
    reportStatus(host, "attribution",
                 (endpoint.empty() ? "no endpoint" : endpoint) +
                     (attribution.isOffline ? ", offline" : ", online"));
    reportStatus(host, "keychain", host.isKeychainLocked() ? "locked" : "unlocked");
    if (host.lifeCycle() == LifeCycle::notRunning) return;
    auto& process = host.process();
    reportStatus(host, "switches",
                 std::string("debug ") + (Corvantile::debug() ? "on" : "off") + ", dry run " +
                     (Corvantile::dryRun() ? "on" : "off"));
    Names plugIns;
    for (const auto& plugIn : host.app().plugIns) plugIns.push_back(plugIn.kind.name);
    reportStatus(host, "plug-ins", listed(plugIns));
    for (const auto& sink : process.sinks()) reportStatus(host, "sink", describeSink(sink));
    reportStatus(host, "network", describe(NetworkReachability::shared()->networkStatus()));
}

} // namespace

std::vector<Command> inspectionCommands(Host& host) {
    return {
        {"lookup", "SERVICE", "look a service up among the app's plug-ins, as a plug-in would",
         [&host](Arguments given) { runLookup(host, given); }},
        {"network", "", "show the network status that events tell", [&host](Arguments) { runNetwork(host); }},
        {"status", "", "show the app, its plug-ins and its sinks", [&host](Arguments) { runStatus(host); }},
    };
}

} // namespace corvantile::tool
