#include "CorvantileTest/ScriptedAds.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <utility>

namespace corvantile {

ScriptedAds::ScriptedAds() = default;

ScriptedAds::~ScriptedAds() = default;

void ScriptedAds::setToken(std::string token) {
    const std::lock_guard lock(mutex_);
    token_ = std::move(token);
    failure_.reset();
}

void ScriptedAds::setFailure(AAAttributionFailure failure) {
    const std::lock_guard lock(mutex_);
    failure_ = failure;
}

void ScriptedAds::setAdvertisingIdentifier(std::string identifier) {
    const std::lock_guard lock(mutex_);
    identifier_ = std::move(identifier);
}

int ScriptedAds::tokenCalls() const {
    const std::lock_guard lock(mutex_);
    return tokenCalls_;
}

int ScriptedAds::advertisingIdentifierCalls() const {
    const std::lock_guard lock(mutex_);
    return identifierCalls_;
}

std::string ScriptedAds::token() {
    const std::lock_guard lock(mutex_);
    ++tokenCalls_;
    if (failure_) throw NSError(attributionErrorDomain, static_cast<int>(*failure_));
    return token_;
}

std::string ScriptedAds::advertisingIdentifier() const {
    const std::lock_guard lock(mutex_);
    ++identifierCalls_;
    return identifier_;
}

} // namespace corvantile
