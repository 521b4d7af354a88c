#include "CorvantileTest/ScriptedHTTP.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Network/detail/HTTPRequestFlaw.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace corvantile {

namespace {

// A time-out beyond this would overflow the queues' unit.
constexpr std::chrono::milliseconds longestWait = std::chrono::hours(24 * 365 * 100);
constexpr std::chrono::nanoseconds never = std::chrono::nanoseconds::max();

std::exception_ptr errorOf(HTTPFailure failure, std::string text) {
    return std::make_exception_ptr(NSError(httpErrorDomain, static_cast<int>(failure),
                                           {{NSError::localizedDescriptionKey, std::move(text)}}));
}

ScriptedReply withinTimeout(ScriptedReply reply, std::chrono::milliseconds timeout) {
    const std::chrono::nanoseconds limit = std::clamp(timeout, std::chrono::milliseconds(0), longestWait);
    if (limit.count() > 0 && reply.delay <= limit) return reply;
    return {.failure = HTTPFailure::timedOut, .delay = limit};
}

} // namespace

struct ScriptedHTTP::Log {
    std::mutex mutex; // also guards the completions of the exchanges
    std::vector<SentRequest> sent;
};

// One request. Only the item that will complete it holds it: it goes with the queues when the process ends.
class ScriptedHTTP::Exchange {
public:
    Exchange(std::shared_ptr<Log> log, HTTPRequest request, Completion completion)
        : log_(std::move(log)), url_(request.url), completion_(std::move(completion)) {
        const std::lock_guard lock(log_->mutex);
        index_ = log_->sent.size();
        log_->sent.push_back({std::move(request)});
    }

    void complete(ScriptedReply reply) {
        const auto completion = take(false);
        if (!completion) return;
        if (reply.response) return completion(std::move(reply.response), nullptr);
        completion(std::nullopt,
                   errorOf(reply.failure, "The scripted network fails the request to " + url_ + "."));
    }

    void cancel() { take(true); }

private:
    // The completion dies with the caller's copy, outside the lock: its end may run user code.
    Completion take(bool isCancelled) {
        const std::lock_guard lock(log_->mutex);
        if (completion_ && isCancelled) log_->sent[index_].isCancelled = true;
        return std::exchange(completion_, nullptr);
    }

    const std::shared_ptr<Log> log_;
    const std::string url_;
    std::size_t index_ = 0;
    Completion completion_;
};

class ScriptedHTTP::Handle final : public PlatformRequest {
public:
    explicit Handle(std::weak_ptr<Exchange> exchange) : exchange_(std::move(exchange)) {}
    ~Handle() override {
        if (const auto exchange = exchange_.lock()) exchange->cancel();
    }

private:
    const std::weak_ptr<Exchange> exchange_;
};

ScriptedHTTP::ScriptedHTTP() : log_(std::make_shared<Log>()) {}

ScriptedHTTP::~ScriptedHTTP() = default;

void ScriptedHTTP::answer(std::string prefix, HTTPResponse response, std::chrono::nanoseconds delay) {
    handle(std::move(prefix), [response = std::move(response), delay](const HTTPRequest&) {
        return ScriptedReply{.response = response, .delay = delay};
    });
}

void ScriptedHTTP::fail(std::string prefix, HTTPFailure failure, std::chrono::nanoseconds delay) {
    handle(std::move(prefix), [failure, delay](const HTTPRequest&) {
        return ScriptedReply{.failure = failure, .delay = delay};
    });
}

void ScriptedHTTP::hang(std::string prefix) { fail(std::move(prefix), HTTPFailure::timedOut, never); }

void ScriptedHTTP::handle(std::string prefix, Script script) {
    const std::lock_guard lock(mutex_);
    scripts_[std::move(prefix)].swap(script);
}

std::vector<SentRequest> ScriptedHTTP::sent() const {
    const std::lock_guard lock(log_->mutex);
    return log_->sent;
}

std::shared_ptr<PlatformRequest> ScriptedHTTP::send(HTTPRequest request, std::shared_ptr<DispatchQueue> queue,
                                                    Completion completion) {
    const auto timeout = request.timeout;
    const auto exchange = std::make_shared<Exchange>(log_, request, std::move(completion));
    auto handle = std::make_shared<Handle>(exchange);
    const auto reply = withinTimeout(replyTo(request), timeout);
    queue->asyncAfter(reply.delay, [exchange, reply] { exchange->complete(reply); });
    return handle;
}

ScriptedReply ScriptedHTTP::replyTo(const HTTPRequest& request) const {
    if (!flawOf(request).empty()) return {.failure = HTTPFailure::badURL};
    Script chosen;
    std::unique_lock lock(mutex_);
    std::size_t length = 0;
    for (const auto& [prefix, script] : scripts_) {
        if (prefix.size() < length || request.url.compare(0, prefix.size(), prefix) != 0) continue;
        length = prefix.size();
        chosen = script;
    }
    lock.unlock();
    return chosen ? chosen(request) : ScriptedReply{};
}

} // namespace corvantile
