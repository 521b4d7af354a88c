#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace corvantile::tool {

// JSON as the tool prints it, on one line unless an indentation is given. What is no UTF-8 is replaced: the
// tool shows files that may be damaged.
[[nodiscard]] std::string dumped(const nlohmann::ordered_json& json, int indentation = -1);

} // namespace corvantile::tool
