#include "CorvantileDesktop/HTTP/HTTPRoutes.hpp"
#include "CorvantileDesktop/HTTP/detail/CurlHTTPClient.hpp"
#include "CorvantileDesktop/detail/DesktopParts.hpp"
#include "CorvantilePlatform/FatalError.hpp"

namespace corvantile {

HTTPRoutes& DesktopPlatform::httpRoutes() const { return *parts_->httpRoutes; }

void DesktopPlatform::Parts::addHTTP(Ports& made, const DesktopOptions& options) {
    httpRoutes = std::make_shared<HTTPRoutes>();
    for (const auto& [origin, base] : options.httpRoutes)
        if (!httpRoutes->set(origin, base))
            fatalError("No route can lead from '" + origin + "' to '" + base + "'.");
    const auto client = std::make_shared<CurlHTTPClient>(httpRoutes);
    closeHTTP = [client] { client->close(); };
    made.http = client;
}

} // namespace corvantile
