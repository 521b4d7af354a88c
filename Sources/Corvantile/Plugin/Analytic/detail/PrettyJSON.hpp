#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"

#include <optional>
#include <string>

namespace corvantile {

// The object as JSON in the platform's pretty form, which no library writes: two blanks a level, `"key" :
// value`, one member a line, slashes escaped, and an empty line between the brackets of what is empty.
// nullopt when JSON cannot hold one of its values.
[[nodiscard]] std::optional<std::string> prettyJSON(const EventValue::Map& object);

} // namespace corvantile
