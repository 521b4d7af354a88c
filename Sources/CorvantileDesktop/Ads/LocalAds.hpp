#pragma once

#include "CorvantilePlatform/Ads/AAAttribution.hpp"
#include "CorvantilePlatform/Ads/ASIdentifierManager.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

namespace corvantile {

// The answers of this machine's ads services; by default those of a device without them.
struct AdsOptions {
    // The attribution token; nullopt: `failure` is thrown.
    std::optional<std::string> token = {};
    AAAttributionFailure failure = AAAttributionFailure::platformNotSupported;
    // How long either takes; more than LocalAds::longestDelay counts as that.
    std::chrono::milliseconds delay{0};
    // A UUID; any other text counts as withheld.
    std::string advertisingIdentifier = ASIdentifierManager::withheldIdentifier;
};

// Ads services that never leave this machine. Threads: any.
class CORVANTILE_API LocalAds final : public AAAttribution, public ASIdentifierManager {
public:
    // Tokens are asked for while an app launches.
    static constexpr std::chrono::milliseconds longestDelay = std::chrono::seconds(1);

    explicit LocalAds(AdsOptions options);
    ~LocalAds() override;

    // Affects later calls.
    void set(AdsOptions options);

    // Blocks its thread for the delay.
    [[nodiscard]] std::string token() override;
    [[nodiscard]] std::string advertisingIdentifier() const override;

private:
    [[nodiscard]] AdsOptions options() const;

    mutable std::mutex mutex_;
    AdsOptions options_;
};

} // namespace corvantile
