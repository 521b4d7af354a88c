#include "Corvantile/Extension/Encodable.hpp"

#include "CorvantilePlatform/Foundation/detail/Unicode.hpp"
#include "HostCore/detail/JSON.hpp"

#include <nlohmann/json.hpp>

#include <cmath>

namespace corvantile {

std::string encodeJSON(const std::string& text) {
    if (!isUtf8(text)) throwJSONError("The text to encode is not UTF-8.");
    return nlohmann::json(text).dump();
}

std::string encodeJSON(const char* text) {
    if (text == nullptr) throwJSONError("The text to encode is null.");
    return encodeJSON(std::string(text));
}

std::string detail::realText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    return nlohmann::json(value).dump();
}

std::string detail::encodeReal(double value) {
    if (!std::isfinite(value)) throwJSONError("The number to encode is not finite.");
    return realText(value);
}

std::optional<std::string> detail::utf8Text(std::string json) {
    if (!isUtf8(json)) return std::nullopt;
    return json;
}

} // namespace corvantile
