#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// The terms of an automatically renewing subscription, in eight lines to show beside the offer.
[[nodiscard]] CORVANTILE_API std::vector<std::string> defaultIapPolicy();

// The record of the settings.
struct CORVANTILE_API Setting {
    static constexpr std::string_view typeName = "Setting";

    std::vector<std::string> iapPolicy = defaultIapPolicy();
    bool manageSubscriptionEnabled = true;
    bool reviewAppEnabled = true;

    [[nodiscard]] static std::optional<Setting> fromJSON(std::string_view json);

    friend bool operator==(const Setting&, const Setting&) = default;
};

[[nodiscard]] CORVANTILE_API std::string encodeJSON(const Setting& setting);
[[nodiscard]] CORVANTILE_API std::string describe(const Setting& setting);

} // namespace corvantile
