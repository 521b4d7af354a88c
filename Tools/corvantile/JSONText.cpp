#include "Tools/corvantile/JSONText.hpp"

#include <nlohmann/json.hpp>

namespace corvantile::tool {

std::string dumped(const nlohmann::ordered_json& json, int indentation) {
    return json.dump(indentation, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace corvantile::tool
