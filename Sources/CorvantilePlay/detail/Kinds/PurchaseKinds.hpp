#pragma once

#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlay/detail/Description/PlugInRegistry.hpp"

#include <vector>

// What purchases add to the registry.
namespace corvantile::tool {

[[nodiscard]] PlugInKind productRequestPlugin();
[[nodiscard]] PlugInKind productPromoPlugin();
[[nodiscard]] PlugInKind consumablePlugin();
[[nodiscard]] PlugInKind receiptPlugin();
[[nodiscard]] PlugInKind receiptTrackingPlugin();

// What the configuration of an IAPReceiptPlugin lists.
[[nodiscard]] std::vector<IAPReceiptPlugin::Product>
readReceiptProducts(const DescriptionObject& configuration);

} // namespace corvantile::tool
