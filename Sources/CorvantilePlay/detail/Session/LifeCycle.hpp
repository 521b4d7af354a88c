#pragma once

#include <string_view>

namespace corvantile::tool {

// Where an app stands in its life.
enum class LifeCycle { notRunning, inactive, active, background };

[[nodiscard]] std::string_view describe(LifeCycle lifeCycle);

// The commands that lead away from there, for whoever called another one.
[[nodiscard]] std::string_view nextCommands(LifeCycle lifeCycle);

} // namespace corvantile::tool
