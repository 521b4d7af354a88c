#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"

#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"

#include <utility>

namespace corvantile {

namespace {

// The misspellings are what the back ends have always received, and match on.
const char* connectionStatus(NetworkReachabilityStatus status) {
    switch (status) {
    case NetworkReachabilityStatus::unknown: break;
    case NetworkReachabilityStatus::notReachable: return "not_vailable";
    case NetworkReachabilityStatus::reachableViaEthernetOrWiFi: return "wifi";
    case NetworkReachabilityStatus::reachableViaCellular: return "cellular";
    }
    return "unknow";
}

} // namespace

AnalyticEvent::AnalyticEvent(std::string eventName) : name(std::move(eventName)) {}

AnalyticEvent::AnalyticEvent(std::string eventName, EventParameters parameters)
    : name(std::move(eventName)), params(std::move(parameters)) {
    const auto status = NetworkReachability::shared()->networkStatus();
    params->insert_or_assign(std::string(connectionStatusKey), connectionStatus(status));
}

std::string describe(const AnalyticEvent& event) {
    const auto params = event.params ? "Optional(" + EventValue(*event.params).description() + ")" : "nil";
    return "AnalyticEvent(name: " + debugText(event.name) + ", params: " + params + ")";
}

} // namespace corvantile
