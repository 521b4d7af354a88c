#pragma once

#include "Tools/corvantile/Description/PlugInRegistry.hpp"

// What purchases add to the registry.
namespace corvantile::tool {

[[nodiscard]] PlugInKind productRequestPlugin();
[[nodiscard]] PlugInKind productPromoPlugin();
[[nodiscard]] PlugInKind consumablePlugin();
[[nodiscard]] PlugInKind receiptPlugin();
[[nodiscard]] PlugInKind receiptTrackingPlugin();

} // namespace corvantile::tool
