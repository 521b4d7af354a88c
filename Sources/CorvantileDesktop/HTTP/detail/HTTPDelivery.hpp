#pragma once

#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <memory>
#include <mutex>
#include <optional>

namespace corvantile {

class DispatchQueue;

// The completion of one exchange, called at most once, on its queue. The transfer owns it, then the posted
// item, so that it is released when the process ends. Threads: any.
class HTTPDelivery final : public std::enable_shared_from_this<HTTPDelivery> {
public:
    HTTPDelivery(std::shared_ptr<DispatchQueue> queue, HTTPClient::Completion completion);

    // One of the two, once.
    void succeed(HTTPResponse response);
    void fail(std::exception_ptr error);

    // The completion is not called. False when it was called already.
    bool cancel();
    [[nodiscard]] bool isCancelled() const;

private:
    void post(std::optional<HTTPResponse> response, std::exception_ptr error);
    [[nodiscard]] HTTPClient::Completion take();

    const std::shared_ptr<DispatchQueue> queue_;
    mutable std::mutex mutex_;
    HTTPClient::Completion completion_;
};

} // namespace corvantile
