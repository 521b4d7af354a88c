#pragma once

#include "CorvantilePlatform/Adjust/ADJEvent.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// What the SDK finds wrong with what it is given, to follow "… because "; nullopt when it is right.
[[nodiscard]] std::optional<std::string> faultOfAppToken(std::string_view token);
[[nodiscard]] std::optional<std::string> faultOfEnvironment(std::string_view environment);
[[nodiscard]] std::optional<std::string> faultOfRevenue(const ADJRevenue& revenue);

} // namespace corvantile
