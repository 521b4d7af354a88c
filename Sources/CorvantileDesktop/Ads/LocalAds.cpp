#include "CorvantileDesktop/Ads/LocalAds.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <thread>
#include <utility>

namespace corvantile {

namespace {

// Texts for people; the code alone is a number.
const char* textOf(AAAttributionFailure failure) {
    switch (failure) {
    case AAAttributionFailure::networkError: return "The attribution service cannot be reached.";
    case AAAttributionFailure::internalError: return "The attribution service failed.";
    case AAAttributionFailure::platformNotSupported: return "This machine has no attribution service.";
    }
    return "There is no attribution token.";
}

// The upper-case letter or the digit; NUL for anything else.
char hexDigit(char c) {
    if (c >= 'a' && c <= 'f') return static_cast<char>(c - 'a' + 'A');
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') ? c : '\0';
}

std::string identifierOf(std::string_view text) {
    constexpr std::string_view shape = ASIdentifierManager::withheldIdentifier;
    if (text.size() != shape.size()) return std::string(shape);
    std::string identifier(shape);
    for (std::size_t index = 0; index < shape.size(); ++index) {
        const bool isHyphen = shape[index] == '-';
        const char c = isHyphen ? text[index] : hexDigit(text[index]);
        if (isHyphen ? c != '-' : c == '\0') return std::string(shape);
        identifier[index] = c;
    }
    return identifier;
}

} // namespace

LocalAds::LocalAds(AdsOptions options) : options_(std::move(options)) {}

LocalAds::~LocalAds() = default;

void LocalAds::set(AdsOptions options) {
    const std::lock_guard lock(mutex_);
    options_ = std::move(options);
}

std::string LocalAds::token() {
    const auto now = options();
    std::this_thread::sleep_for(std::min(now.delay, longestDelay));
    if (now.token) return *now.token;
    throw NSError(attributionErrorDomain, static_cast<int>(now.failure),
                  {{NSError::localizedDescriptionKey, textOf(now.failure)}});
}

std::string LocalAds::advertisingIdentifier() const { return identifierOf(options().advertisingIdentifier); }

AdsOptions LocalAds::options() const {
    const std::lock_guard lock(mutex_);
    return options_;
}

} // namespace corvantile
