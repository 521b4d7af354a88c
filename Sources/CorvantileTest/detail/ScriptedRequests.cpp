#include "CorvantileTest/detail/ScriptedRequests.hpp"

#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <atomic>
#include <utility>

namespace corvantile {

struct ScriptedRequests::Counts {
    std::atomic<int> underWay{0};
    std::atomic<int> cancelled{0};
};

// An answer that is given once or never. The queue holds it, or the script while it hangs; the request only
// knows it, so that an answer which keeps its own request is no cycle that outlives the process.
class ScriptedRequests::Pending {
public:
    Pending(Answer answer, std::shared_ptr<Counts> counts)
        : answer_(std::move(answer)), counts_(std::move(counts)) {
        ++counts_->underWay;
    }
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;
    ~Pending() { take(); }

    void give() {
        if (const auto answer = take()) answer();
    }

    void cancel() {
        if (take()) ++counts_->cancelled;
    }

private:
    Answer take() {
        std::unique_lock lock(mutex_);
        auto answer = std::exchange(answer_, nullptr);
        lock.unlock();
        if (answer) --counts_->underWay;
        return answer;
    }

    std::mutex mutex_;
    Answer answer_;
    const std::shared_ptr<Counts> counts_;
};

class ScriptedRequests::Request final : public PlatformRequest {
public:
    explicit Request(std::weak_ptr<Pending> pending) : pending_(std::move(pending)) {}
    ~Request() override {
        if (const auto pending = pending_.lock()) pending->cancel();
    }

private:
    const std::weak_ptr<Pending> pending_;
};

ScriptedRequests::ScriptedRequests() : counts_(std::make_shared<Counts>()) {}
ScriptedRequests::~ScriptedRequests() = default;

std::shared_ptr<PlatformRequest> ScriptedRequests::begin(DispatchQueue& queue, Answer answer) {
    const auto pending = std::make_shared<Pending>(std::move(answer), counts_);
    auto request = std::make_shared<Request>(pending);
    std::unique_lock lock(mutex_);
    if (isHanging_) {
        hanging_.push_back(pending);
        return request;
    }
    const auto delay = delay_;
    lock.unlock();
    queue.asyncAfter(delay, [pending] { pending->give(); });
    return request;
}

void ScriptedRequests::setDelay(std::chrono::nanoseconds delay) {
    const std::lock_guard lock(mutex_);
    delay_ = delay;
}

void ScriptedRequests::setHanging(bool hanging) {
    const std::lock_guard lock(mutex_);
    isHanging_ = hanging;
}

int ScriptedRequests::underWay() const { return counts_->underWay; }
int ScriptedRequests::cancelled() const { return counts_->cancelled; }

void ScriptedRequests::close() {
    std::unique_lock lock(mutex_);
    const auto released = std::exchange(hanging_, {});
    lock.unlock();
}

} // namespace corvantile
