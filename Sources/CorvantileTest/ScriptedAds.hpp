#pragma once

#include "CorvantilePlatform/Ads/AAAttribution.hpp"
#include "CorvantilePlatform/Ads/ASIdentifierManager.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <mutex>
#include <optional>
#include <string>

namespace corvantile {

// The ads services of a test device. A new process has a token and withholds its identifier. Threads: any.
class CORVANTILE_API ScriptedAds final : public AAAttribution, public ASIdentifierManager {
public:
    static constexpr const char* usualToken = "c2NyaXB0ZWQtdG9rZW4=";

    ScriptedAds();
    ~ScriptedAds() override;

    // What asking for a token gives from now on.
    void setToken(std::string token);
    void setFailure(AAAttributionFailure failure);
    void setAdvertisingIdentifier(std::string identifier);

    // How often each was asked for.
    [[nodiscard]] int tokenCalls() const;
    [[nodiscard]] int advertisingIdentifierCalls() const;

    [[nodiscard]] std::string token() override;
    [[nodiscard]] std::string advertisingIdentifier() const override;

private:
    mutable std::mutex mutex_;
    std::string token_ = usualToken;
    std::optional<AAAttributionFailure> failure_;
    std::string identifier_ = withheldIdentifier;
    int tokenCalls_ = 0;
    mutable int identifierCalls_ = 0;
};

} // namespace corvantile
