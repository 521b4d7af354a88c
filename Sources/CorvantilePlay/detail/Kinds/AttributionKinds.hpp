#pragma once

#include "CorvantilePlay/detail/Description/PlugInRegistry.hpp"

// What attribution adds to the registry.
namespace corvantile::tool {

[[nodiscard]] PlugInKind adjustPlugin();
[[nodiscard]] PlugInKind adNetworkPlugin();
[[nodiscard]] SinkKind adjustAnalyticComponent();

} // namespace corvantile::tool
