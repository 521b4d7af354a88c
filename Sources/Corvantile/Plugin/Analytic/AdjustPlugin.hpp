#pragma once

#include "Corvantile/Plugin/Analytic/AdjustPluggable.hpp"
#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class ADJConfig;

// What the SDK's service issues to sign an app's packages with. The host keeps it; the framework has none.
struct AdjustAppSecret {
    std::uint64_t id = 0;
    std::uint64_t info1 = 0;
    std::uint64_t info2 = 0;
    std::uint64_t info3 = 0;
    std::uint64_t info4 = 0;
};

// Starts the attribution SDK at launch, hands it the push token, and prints what the SDK reports.
// Held by shared_ptr, as plug-ins are.
class CORVANTILE_API AdjustPlugin final : public AdjustPluggable,
                                          public AdjustDelegate,
                                          public std::enable_shared_from_this<AdjustPlugin> {
public:
    // In debug the SDK runs in its sandbox. `customDelegate` is called by the SDK instead of this plug-in if
    // it is alive at launch; it is not kept alive.
    AdjustPlugin(std::string token, bool isDebug, std::optional<AdjustAppSecret> appSecret = std::nullopt,
                 const std::shared_ptr<AdjustDelegate>& customDelegate = nullptr);
    [[deprecated("Say which app it is: AdjustPlugin(token, isDebug).")]] AdjustPlugin();
    ~AdjustPlugin() override;

    [[nodiscard]] const std::string& appToken() const { return appToken_; }
    // Counts until launch.
    void setAppToken(std::string appToken);

    bool didFinishLaunchingWithOptions(UIApplication& application, const LaunchOptions& options) override;
    void didRegisterForRemoteNotificationsWithDeviceToken(UIApplication& application,
                                                          const std::vector<std::uint8_t>& token) override;

    void adjustAttributionChanged(const std::optional<ADJAttribution>& attribution) override;
    void adjustEventTrackingSucceeded(const std::optional<ADJEventSuccess>& success) override;
    void adjustEventTrackingFailed(const std::optional<ADJEventFailure>& failure) override;
    void adjustSessionTrackingSucceeded(const std::optional<ADJSessionSuccess>& success) override;
    void adjustSessionTrackingFailed(const std::optional<ADJSessionFailure>& failure) override;
    // The SDK opens every deferred deep link.
    bool adjustDeeplinkResponse(const std::optional<std::string>& deeplink) override;
    void adjustConversionValueUpdated(const std::optional<int>& conversionValue) override;

private:
    void configure(ADJConfig& config);

    std::string appToken_;
    const std::weak_ptr<AdjustDelegate> delegate_;
    const std::optional<AdjustAppSecret> appSecret_;
    const bool isDebug_ = false;
};

} // namespace corvantile
