#include "CorvantileDesktop/HTTP/detail/CurlHTTPClient.hpp"

#include "CorvantileDesktop/HTTP/HTTPRoutes.hpp"
#include "CorvantileDesktop/HTTP/detail/CurlTransfers.hpp"
#include "CorvantileDesktop/HTTP/detail/HTTPDelivery.hpp"
#include "CorvantileDesktop/HTTP/detail/WebAddress.hpp"
#include "CorvantilePlatform/Network/detail/HTTPRequestFlaw.hpp"

#include <utility>

namespace corvantile {

namespace {

// The host as errors name it, with the one that a route leads to.
std::string hostText(const WebAddress& asked, const WebAddress& destination) {
    if (asked.origin() == destination.origin()) return asked.hostAndPort();
    return asked.hostAndPort() + " (at " + destination.hostAndPort() + ")";
}

} // namespace

class CurlHTTPClient::Handle final : public PlatformRequest {
public:
    Handle(std::weak_ptr<HTTPDelivery> delivery, std::weak_ptr<CurlTransfers> transfers)
        : delivery_(std::move(delivery)), transfers_(std::move(transfers)) {}
    ~Handle() override {
        const auto delivery = delivery_.lock();
        if (!delivery || !delivery->cancel()) return;
        if (const auto transfers = transfers_.lock()) transfers->wake();
    }

private:
    const std::weak_ptr<HTTPDelivery> delivery_;
    const std::weak_ptr<CurlTransfers> transfers_;
};

CurlHTTPClient::CurlHTTPClient(std::shared_ptr<const HTTPRoutes> routes)
    : routes_(std::move(routes)), transfers_(std::make_shared<CurlTransfers>()) {}

CurlHTTPClient::~CurlHTTPClient() { close(); }

std::shared_ptr<PlatformRequest>
CurlHTTPClient::send(HTTPRequest request, std::shared_ptr<DispatchQueue> queue, Completion completion) {
    const auto delivery = std::make_shared<HTTPDelivery>(std::move(queue), std::move(completion));
    auto handle = std::make_shared<Handle>(delivery, transfers_);
    begin(std::move(request), delivery);
    return handle;
}

void CurlHTTPClient::begin(HTTPRequest request, const std::shared_ptr<HTTPDelivery>& delivery) {
    if (const auto flaw = flawOf(request); !flaw.empty())
        return delivery->fail(httpError(HTTPFailure::badURL, flaw));
    const auto asked = parseWebAddress(request.url);
    if (!asked) return delivery->fail(httpError(HTTPFailure::badURL, "The request's address is malformed."));
    request.url = routes_->destination(request.url);
    const auto host = hostText(*asked, parseWebAddress(request.url).value_or(*asked));
    if (request.timeout.count() <= 0) return delivery->fail(httpError(CURLE_OPERATION_TIMEDOUT, 0, host));
    transfers_->add(std::make_unique<CurlTransfer>(std::move(request), host, delivery));
}

void CurlHTTPClient::close() { transfers_->close(); }

} // namespace corvantile
