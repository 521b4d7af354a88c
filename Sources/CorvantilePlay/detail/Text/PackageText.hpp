#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "CorvantileDesktop/Adjust/OutboxEntry.hpp"

#include <string>
#include <string_view>

// Packages of the attribution SDK, for people and for programs.
namespace corvantile::tool {

[[nodiscard]] std::string_view describe(PackageKind kind);
[[nodiscard]] std::string_view describe(PackageState state);

// `event abc123 4.99000 USD: sent at try 1, answer 200 {"message":…}`; a long answer is cut short.
[[nodiscard]] std::string describe(const OutboxEntry& package);

// What a program wants to know of it; what it has not is left out.
[[nodiscard]] EventValue::Map fieldsOf(const OutboxEntry& package);

} // namespace corvantile::tool
