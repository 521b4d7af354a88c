#include "CorvantileDesktop/detail/DesktopParts.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <utility>

namespace corvantile {

namespace {

// Every request fails as it would on a machine without a network, which apps know how to meet.
class LeftOutHTTPClient final : public HTTPClient {
public:
    [[nodiscard]] std::shared_ptr<PlatformRequest> send(HTTPRequest, std::shared_ptr<DispatchQueue> queue,
                                                        Completion completion) override {
        const NSError error(
            httpErrorDomain, static_cast<int>(HTTPFailure::notConnectedToInternet),
            {{NSError::localizedDescriptionKey,
              "Nothing is sent: the desktop platform was built with CORVANTILE_DESKTOP_HTTP off."}});
        return postAnswer(*queue,
                          [completion = std::move(completion), error = std::make_exception_ptr(error)] {
                              completion(std::nullopt, error);
                          });
    }
};

} // namespace

void DesktopPlatform::Parts::addHTTP(Ports& made, const DesktopOptions&) {
    made.http = std::make_shared<LeftOutHTTPClient>();
}

} // namespace corvantile
