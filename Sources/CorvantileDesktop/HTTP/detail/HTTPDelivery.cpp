#include "CorvantileDesktop/HTTP/detail/HTTPDelivery.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <utility>

namespace corvantile {

HTTPDelivery::HTTPDelivery(std::shared_ptr<DispatchQueue> queue, HTTPClient::Completion completion)
    : queue_(std::move(queue)), completion_(std::move(completion)) {}

void HTTPDelivery::succeed(HTTPResponse response) { post(std::move(response), nullptr); }

void HTTPDelivery::fail(std::exception_ptr error) { post(std::nullopt, std::move(error)); }

void HTTPDelivery::post(std::optional<HTTPResponse> response, std::exception_ptr error) {
    queue_->async(
        [self = shared_from_this(), answer = std::move(response), fault = std::move(error)]() mutable {
            if (const auto completion = self->take()) completion(std::move(answer), std::move(fault));
        });
}

bool HTTPDelivery::cancel() { return take() != nullptr; }

bool HTTPDelivery::isCancelled() const {
    const std::lock_guard lock(mutex_);
    return completion_ == nullptr;
}

// It dies with the caller's copy, outside the lock: its end may run user code.
HTTPClient::Completion HTTPDelivery::take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(completion_, nullptr);
}

} // namespace corvantile
