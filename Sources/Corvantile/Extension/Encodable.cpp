#include "Corvantile/Extension/Encodable.hpp"

#include "Platform/Foundation/NSError.hpp"
#include "Platform/Foundation/Unicode.hpp"

#include <nlohmann/json.hpp>

namespace corvantile {

std::string encodeJSON(const std::string& text) {
    if (!isUtf8(text))
        throw NSError("corvantile.json", 1,
                      {{NSError::localizedDescriptionKey, "The text to encode is not UTF-8."}});
    return nlohmann::json(text).dump();
}

std::optional<std::string> detail::utf8Text(std::string json) {
    if (!isUtf8(json)) return std::nullopt;
    return json;
}

} // namespace corvantile
