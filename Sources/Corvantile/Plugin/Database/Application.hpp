#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The record of the app on this device.
struct CORVANTILE_API Application {
    static constexpr std::string_view typeName = "Application";

    // 1970: a record that was never touched. (A Date by itself begins in 2001.)
    Date updatedTime = Date::fromUnixSeconds(0);

    [[nodiscard]] static std::optional<Application> fromJSON(std::string_view json);

    friend bool operator==(const Application&, const Application&) = default;
};

[[nodiscard]] CORVANTILE_API std::string encodeJSON(const Application& application);
[[nodiscard]] CORVANTILE_API std::string describe(const Application& application);

} // namespace corvantile
