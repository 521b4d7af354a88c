#include "CorvantilePlatform/Adjust/Adjust.hpp"

#include "CorvantilePlatform/Platform.hpp"

#include <cstdio>
#include <utility>

namespace corvantile {

namespace {

Adjust& installedAdjust() { return *Platform::current().ports().adjust; }

} // namespace

Adjust::~Adjust() = default;

std::shared_ptr<ADJSubscription> Adjust::makeSubscription(const NSDecimalNumber& price,
                                                          const std::string& currency,
                                                          const std::string& transactionId,
                                                          std::string receipt) {
    return std::make_shared<ADJSubscription>(price, currency, transactionId, std::move(receipt));
}

void Adjust::appDidLaunch(std::shared_ptr<ADJConfig> config) { installedAdjust().launch(std::move(config)); }
void Adjust::trackEvent(const ADJEvent& event) { installedAdjust().send(event); }
void Adjust::trackSubscription(const ADJSubscription& subscription) { installedAdjust().send(subscription); }
void Adjust::setDeviceToken(const std::vector<std::uint8_t>& token) { installedAdjust().setPushToken(token); }

std::shared_ptr<ADJConfig> ADJConfig::make(const std::string& appToken, const std::string& environment) {
    return installedAdjust().makeConfig(appToken, environment);
}

std::string ADJConfig::description() const {
    char text[40];
    std::snprintf(text, sizeof text, "<ADJConfig: %p>", static_cast<const void*>(this));
    return text;
}

std::shared_ptr<ADJSubscription> ADJSubscription::make(const NSDecimalNumber& price,
                                                       const std::string& currency,
                                                       const std::string& transactionId,
                                                       std::string receipt) {
    return installedAdjust().makeSubscription(price, currency, transactionId, std::move(receipt));
}

} // namespace corvantile
