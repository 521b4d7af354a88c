#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>

// The JSON that the tool prints: one object a line, each with a `kind`. Docs/Tool.md names every field.
namespace corvantile::tool {

// One line, or more if an indentation is given. Bytes that are no UTF-8 are replaced: the tool shows files
// that may be damaged.
[[nodiscard]] std::string dumped(const nlohmann::ordered_json& json, int indentation = -1);

// Decimal numbers and dates become text, so that no digit is lost.
[[nodiscard]] nlohmann::ordered_json toJSON(const EventValue& value);

// The line that comes first and names the version of the format.
[[nodiscard]] std::string formatLine();

// `fields` is an object; it holds no `kind`.
[[nodiscard]] std::string jsonLine(std::string_view kind, const nlohmann::ordered_json& fields);

} // namespace corvantile::tool
