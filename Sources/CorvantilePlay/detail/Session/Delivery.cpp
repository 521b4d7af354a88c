#include "CorvantilePlay/detail/Session/Delivery.hpp"

#include "CorvantileDesktop/Adjust/AdjustOptions.hpp"
#include "CorvantileDesktop/HTTP/HTTPRoutes.hpp"
#include "CorvantileDesktop/HTTP/detail/WebAddress.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <string>

namespace corvantile::tool {

namespace {

// A name is not looked up: who knows where it leads by the time that something is sent?
bool isOfThisMachine(const std::string& host) {
    return host == "localhost" || host == "[::1]" ||
           (host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string::npos);
}

} // namespace

void requireLocalDelivery(const AdjustOptions& options, const std::map<std::string, std::string>& routes) {
    const auto endpoint = withEnvironment(options).endpoint;
    if (endpoint.empty()) return;
    HTTPRoutes made;
    for (const auto& [origin, base] : routes) static_cast<void>(made.set(origin, base));
    const auto address = parseWebAddress(made.destination(endpoint));
    if (address && isOfThisMachine(address->host)) return;
    throw UsageError(
        "a dry run holds events back, but not subscriptions (trackIAPSubs passes every filter): it "
        "is refused while the attribution endpoint is " +
        endpoint + ", which is not on this machine; play --server stands in for it");
}

} // namespace corvantile::tool
