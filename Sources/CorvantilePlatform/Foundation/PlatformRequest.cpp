#include "CorvantilePlatform/Foundation/PlatformRequest.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <mutex>
#include <utility>

namespace corvantile {

namespace {

class Answer {
public:
    explicit Answer(std::function<void()> give) : give_(std::move(give)) {}
    [[nodiscard]] std::function<void()> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(give_, nullptr);
    }

private:
    std::mutex mutex_;
    std::function<void()> give_;
};

// The queue holds the answer: an answer that keeps its own request is then no cycle that lasts.
class AnsweredRequest final : public PlatformRequest {
public:
    explicit AnsweredRequest(std::weak_ptr<Answer> answer) : answer_(std::move(answer)) {}
    ~AnsweredRequest() override {
        if (const auto answer = answer_.lock()) static_cast<void>(answer->take());
    }

private:
    const std::weak_ptr<Answer> answer_;
};

} // namespace

PlatformRequest::~PlatformRequest() = default;

std::shared_ptr<PlatformRequest> postAnswer(DispatchQueue& queue, std::function<void()> answer) {
    const auto posted = std::make_shared<Answer>(std::move(answer));
    auto request = std::make_shared<AnsweredRequest>(posted);
    queue.async([posted] {
        if (const auto taken = posted->take()) taken();
    });
    return request;
}

} // namespace corvantile
