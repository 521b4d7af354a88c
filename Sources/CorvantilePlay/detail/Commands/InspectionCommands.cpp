#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantilePlay/detail/Commands/Commands.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/Refusal.hpp"

#include <algorithm>
#include <string>

namespace corvantile::tool {

namespace {

void runLookup(Host& host, Arguments given) {
    auto& process = host.process();
    const auto& name = given[0].text;
    const auto& services = host.app().services;
    const auto known = std::find_if(services.begin(), services.end(),
                                    [&](const Service& service) { return service.name == name; });
    if (known == services.end()) {
        Names names;
        for (const auto& service : services) names.push_back(service.name);
        throw Refusal(unknownName("service", name, names));
    }
    const auto found = known->find();
    host.reporter().tell("host", "lookup",
                         name + " → " + (found ? process.describePlugIn(*found) : "no plug-in offers it"),
                         {{"protocol", name}, {"found", found != nullptr}});
}

void runNetwork(Host& host) {
    static_cast<void>(host.process());
    const auto status = describe(NetworkReachability::shared()->networkStatus());
    host.reporter().tell("network", "network", status, {{"network", status}});
}

void tellStatus(Host& host, const std::string& key, const std::string& value) {
    host.reporter().tell("host", "status", key + ": " + value, {{"name", key}, {"value", value}});
}

std::string describeSink(const Sink& sink) {
    return sink.name + " (" + sink.kind + "), " +
           (sink.registrations == 0 ? "not registered"
                                    : "registered " + std::to_string(sink.registrations) + " x") +
           ", ignores " + listed(sink.component->ignoredEventNames());
}

void runStatus(Host& host) {
    tellStatus(host, "app",
               host.app().name + " (" + host.app().bundleIdentifier + "), " +
                   std::string(describe(host.lifeCycle())));
    tellStatus(host, "state", host.stateFolder().string());
    const auto& attribution = host.device().attribution;
    const auto endpoint = withEnvironment(attribution).endpoint;
    tellStatus(host, "attribution",
               (endpoint.empty() ? "no endpoint" : endpoint) +
                   (attribution.isOffline ? ", offline" : ", online"));
    tellStatus(host, "keychain", host.isKeychainLocked() ? "locked" : "unlocked");
    if (host.lifeCycle() == LifeCycle::notRunning) return;
    auto& process = host.process();
    tellStatus(host, "switches",
               std::string("debug ") + (Corvantile::debug() ? "on" : "off") + ", dry run " +
                   (Corvantile::dryRun() ? "on" : "off"));
    Names plugIns;
    for (const auto& plugIn : host.app().plugIns) plugIns.push_back(plugIn.kind);
    tellStatus(host, "plug-ins", listed(plugIns));
    for (const auto& sink : process.sinks()) tellStatus(host, "sink", describeSink(sink));
    tellStatus(host, "network", describe(NetworkReachability::shared()->networkStatus()));
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
