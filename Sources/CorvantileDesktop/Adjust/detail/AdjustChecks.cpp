#include "CorvantileDesktop/Adjust/detail/AdjustChecks.hpp"

#include "CorvantilePlatform/Adjust/ADJConfig.hpp"
#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"

#include <cmath>
#include <cstddef>

namespace corvantile {

namespace {

constexpr std::size_t appTokenLength = 12; // UTF-16 units

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        units += scalar.value > 0xFFFF ? 2 : 1;
        text.remove_prefix(scalar.length);
    }
    return units;
}

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

} // namespace

std::optional<std::string> faultOfAppToken(std::string_view token) {
    if (token.empty()) return "the app token is missing";
    const auto length = utf16Length(token);
    if (length == appTokenLength) return std::nullopt;
    return "the app token " + quoted(token) + " has " + std::to_string(length) + " characters, not " +
           std::to_string(appTokenLength);
}

std::optional<std::string> faultOfEnvironment(std::string_view environment) {
    if (environment == ADJEnvironmentSandbox || environment == ADJEnvironmentProduction) return std::nullopt;
    if (environment.empty()) return "the environment is missing";
    return "the environment " + quoted(environment) + " is neither " + quoted(ADJEnvironmentSandbox) +
           " nor " + quoted(ADJEnvironmentProduction);
}

std::optional<std::string> faultOfRevenue(const ADJRevenue& revenue) {
    if (!std::isfinite(revenue.amount)) return "its amount is no number";
    if (revenue.amount < 0) return "its amount is negative";
    if (revenue.currency.empty()) return "its currency is missing";
    return std::nullopt;
}

} // namespace corvantile
