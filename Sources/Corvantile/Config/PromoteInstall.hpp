#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "HostCore/Decoding.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvantile {

// How a host invites its user to install another app. The framework only carries it: the host gets it,
// counts, and shows the prompt.
class CORVANTILE_API PromoteInstall {
public:
    static constexpr std::string_view typeName = "PromoteInstall";

    // Switched off, with no texts.
    PromoteInstall() = default;
    PromoteInstall(bool isEnabled, std::int64_t threshold, std::string appID, std::string appName,
                   std::string messageTitle, std::string messageBody, std::string noButtonTitle,
                   std::string yesButtonTitle);

    // The texts are required. Whether it is enabled, and the threshold, may be missing or null (false and 0)
    // or come as text.
    [[nodiscard]] static PromoteInstall decode(const KeyedDecodingContainer& container);

    [[nodiscard]] bool isEnabled() const { return isEnabled_; }
    // At which count the prompt is shown; what is counted is the host's choice.
    [[nodiscard]] std::int64_t threshold() const { return threshold_; }
    // The store's identifier of the app to install.
    [[nodiscard]] const std::string& appID() const { return appID_; }
    [[nodiscard]] const std::string& appName() const { return appName_; }
    [[nodiscard]] const std::string& messageTitle() const { return messageTitle_; }
    [[nodiscard]] const std::string& messageBody() const { return messageBody_; }
    [[nodiscard]] const std::string& noButtonTitle() const { return noButtonTitle_; }
    [[nodiscard]] const std::string& yesButtonTitle() const { return yesButtonTitle_; }

    [[nodiscard]] bool operator==(const PromoteInstall& other) const = default;

private:
    bool isEnabled_ = false;
    std::int64_t threshold_ = 1;
    std::string appID_;
    std::string appName_;
    std::string messageTitle_;
    std::string messageBody_;
    std::string noButtonTitle_;
    std::string yesButtonTitle_;
};

[[nodiscard]] CORVANTILE_API std::string encodeJSON(const PromoteInstall& promotion);

} // namespace corvantile
