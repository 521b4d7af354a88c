#pragma once

#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <memory>

namespace corvantile {

class CurlTransfers;
class HTTPDelivery;
class HTTPRoutes;

// HTTP/1.1 over libcurl, within the time-out from the first name look-up on; one of zero or less has passed.
// TLS 1.2 or later with the system's authorities; no proxy, whatever the environment says; no cookies. An
// answer that is larger than any sensible one fails as `badServerResponse`.
class CurlHTTPClient final : public HTTPClient {
public:
    explicit CurlHTTPClient(std::shared_ptr<const HTTPRoutes> routes);
    ~CurlHTTPClient() override;

    [[nodiscard]] std::shared_ptr<PlatformRequest>
    send(HTTPRequest request, std::shared_ptr<DispatchQueue> queue, Completion completion) override;

    // Drops requests in flight and all later ones.
    void close();

private:
    class Handle;

    void begin(HTTPRequest request, const std::shared_ptr<HTTPDelivery>& delivery);

    const std::shared_ptr<const HTTPRoutes> routes_;
    const std::shared_ptr<CurlTransfers> transfers_;
};

} // namespace corvantile
