#include "Corvantile/Extension/Encodable.hpp"

#include "Platform/Foundation/NSError.hpp"
#include "Platform/Foundation/Unicode.hpp"

#include <nlohmann/json.hpp>

#include <cmath>

namespace corvantile {

namespace {

[[noreturn]] void refuse(const char* why) {
    throw NSError("corvantile.json", 1, {{NSError::localizedDescriptionKey, why}});
}

} // namespace

std::string encodeJSON(const std::string& text) {
    if (!isUtf8(text)) refuse("The text to encode is not UTF-8.");
    return nlohmann::json(text).dump();
}

std::string detail::encodeReal(double value) {
    if (!std::isfinite(value)) refuse("The number to encode is not finite.");
    return nlohmann::json(value).dump();
}

std::optional<std::string> detail::utf8Text(std::string json) {
    if (!isUtf8(json)) return std::nullopt;
    return json;
}

} // namespace corvantile
