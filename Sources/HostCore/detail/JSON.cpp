#include "HostCore/detail/JSON.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

namespace corvantile {

namespace {

std::optional<std::int64_t> exactInteger(double number) {
    constexpr double greatest = 9007199254740992;
    if (!(std::abs(number) <= greatest) || std::trunc(number) != number) return std::nullopt;
    return static_cast<std::int64_t>(number);
}

} // namespace

void throwJSONError(std::string why) {
    throw NSError("corvantile.json", 1, {{NSError::localizedDescriptionKey, std::move(why)}});
}

std::optional<std::int64_t> jsonInteger(const nlohmann::json& value) {
    if (value.is_number_float()) return exactInteger(value.get<double>());
    if (!value.is_number_integer()) return std::nullopt;
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX))
        return std::nullopt;
    return value.get<std::int64_t>();
}

std::optional<std::int64_t> textInteger(std::string_view text) {
    std::int64_t number = 0;
    const auto* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

} // namespace corvantile
