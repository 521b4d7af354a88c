#include "CorvantileTest/RecordingAdjust.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"

#include <optional>
#include <utility>

namespace corvantile {

RecordingAdjust::RecordingAdjust(std::shared_ptr<DispatchQueue> mainQueue)
    : mainQueue_(std::move(mainQueue)) {}

RecordingAdjust::~RecordingAdjust() = default;

void RecordingAdjust::setConfigAnswer(ConfigAnswer answer) {
    const std::lock_guard lock(mutex_);
    configAnswer_ = answer;
}

void RecordingAdjust::setRefusesSubscriptions(bool refuses) {
    const std::lock_guard lock(mutex_);
    refusesSubscriptions_ = refuses;
}

std::vector<RecordingAdjust::Call> RecordingAdjust::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

void RecordingAdjust::callDelegate(std::function<void(AdjustDelegate& delegate)> callback) {
    std::unique_lock lock(mutex_);
    auto known = delegate_;
    lock.unlock();
    mainQueue_->async([weak = std::move(known), callback = std::move(callback)] {
        if (const auto delegate = weak.lock()) callback(*delegate);
    });
}

std::shared_ptr<ADJConfig> RecordingAdjust::makeConfig(const std::string& appToken,
                                                       const std::string& environment) {
    const std::lock_guard lock(mutex_);
    calls_.emplace_back(ConfigMade{appToken, environment});
    switch (configAnswer_) {
    case ConfigAnswer::usual: return std::make_shared<ADJConfig>(appToken, environment);
    case ConfigAnswer::invalid: return std::make_shared<ADJConfig>(std::nullopt, std::nullopt);
    case ConfigAnswer::none: return nullptr;
    }
    fatalError("ConfigAnswer holds no known enumerator.");
}

std::shared_ptr<ADJSubscription> RecordingAdjust::makeSubscription(const NSDecimalNumber& price,
                                                                   const std::string& currency,
                                                                   const std::string& transactionId,
                                                                   std::string receipt) {
    const std::lock_guard lock(mutex_);
    if (refusesSubscriptions_) return nullptr;
    return Adjust::makeSubscription(price, currency, transactionId, std::move(receipt));
}

void RecordingAdjust::launch(std::shared_ptr<ADJConfig> config) {
    const std::lock_guard lock(mutex_);
    if (config && config->isValid() && !std::exchange(isLaunched_, true)) delegate_ = config->delegate();
    calls_.emplace_back(Launched{std::move(config)});
}

void RecordingAdjust::send(const ADJEvent& event) { record(event); }

void RecordingAdjust::send(const ADJSubscription& subscription) { record(subscription); }

void RecordingAdjust::setPushToken(const std::vector<std::uint8_t>& token) { record(PushToken{token}); }

void RecordingAdjust::record(Call call) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
}

} // namespace corvantile
