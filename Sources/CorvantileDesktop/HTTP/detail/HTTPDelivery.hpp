#pragma once

#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include <memory>
#include <mutex>
#include <optional>

namespace corvantile {

class DispatchQueue;

// The end of one exchange: its completion, which waits for an outcome and for its queue. What will post it,
// or was posted, owns it, so that a process that ends lets go of it. Threads: any.
class HTTPDelivery final : public std::enable_shared_from_this<HTTPDelivery> {
public:
    HTTPDelivery(std::shared_ptr<DispatchQueue> queue, HTTPClient::Completion completion);

    // One of the two, once.
    void succeed(HTTPResponse response);
    void fail(std::exception_ptr error);

    // The completion goes uncalled. False when it has begun.
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
