#pragma once

#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace corvantile {

inline constexpr const char* ADJEnvironmentSandbox = "sandbox";
inline constexpr const char* ADJEnvironmentProduction = "production";

enum class ADJLogLevel : int { verbose = 1, debug, info, warn, error, assertion, suppress };

// How the SDK is started. The platform makes it (`make`); one whose token is missing is not valid and starts
// nothing. Threads: one at a time, and none once the SDK has it.
class CORVANTILE_API ADJConfig {
public:
    // Secret's identifier, then its four parts.
    using AppSecret = std::array<std::uint64_t, 5>;

    // Null when the installed platform refuses; or one without token and environment, if that is its way to
    // refuse.
    [[nodiscard]] static std::shared_ptr<ADJConfig> make(const std::string& appToken,
                                                         const std::string& environment);

    // What a platform makes: both or neither.
    ADJConfig(std::optional<std::string> appToken, std::optional<std::string> environment)
        : appToken_(std::move(appToken)), environment_(std::move(environment)) {}

    [[nodiscard]] bool isValid() const { return appToken_.has_value(); }
    [[nodiscard]] const std::optional<std::string>& appToken() const { return appToken_; }
    [[nodiscard]] const std::optional<std::string>& environment() const { return environment_; }

    void setAppSecret(std::uint64_t secretId, std::uint64_t info1, std::uint64_t info2, std::uint64_t info3,
                      std::uint64_t info4) {
        appSecret_ = AppSecret{secretId, info1, info2, info3, info4};
    }
    [[nodiscard]] const std::optional<AppSecret>& appSecret() const { return appSecret_; }

    // Not kept alive.
    void setDelegate(std::weak_ptr<AdjustDelegate> delegate) { delegate_ = std::move(delegate); }
    [[nodiscard]] const std::weak_ptr<AdjustDelegate>& delegate() const { return delegate_; }

    // Whether packages leave while the app is not active.
    void setSendInBackground(bool enabled) { sendInBackground_ = enabled; }
    [[nodiscard]] bool sendInBackground() const { return sendInBackground_; }

    void setLogLevel(ADJLogLevel level) { logLevel_ = level; }
    [[nodiscard]] ADJLogLevel logLevel() const { return logLevel_; }

    void setAllowAdServicesInfoReading(bool allowed) { allowAdServicesInfoReading_ = allowed; }
    [[nodiscard]] bool allowAdServicesInfoReading() const { return allowAdServicesInfoReading_; }

    void setAllowIdfaReading(bool allowed) { allowIdfaReading_ = allowed; }
    [[nodiscard]] bool allowIdfaReading() const { return allowIdfaReading_; }

    // `<ADJConfig: 0x…>`, as an object without a description of its own shows itself.
    [[nodiscard]] std::string description() const;

private:
    std::optional<std::string> appToken_;
    std::optional<std::string> environment_;
    std::optional<AppSecret> appSecret_;
    std::weak_ptr<AdjustDelegate> delegate_;
    bool sendInBackground_ = false;
    bool allowAdServicesInfoReading_ = true;
    bool allowIdfaReading_ = true;
    ADJLogLevel logLevel_ = ADJLogLevel::info;
};

} // namespace corvantile
