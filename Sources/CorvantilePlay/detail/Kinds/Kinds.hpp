#pragma once

#include "Corvantile/Plugin/AdNetwork/AdNetworkPluggable.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlay/PlayRegistry.hpp"
#include "CorvantilePlay/detail/Kinds/Follower.hpp"

#include <memory>
#include <vector>

// The framework's own kinds. They use the registry as a host does.
namespace corvantile::tool {

void addCoreKinds(PlayRegistry& registry);
void addStorageKinds(PlayRegistry& registry);
void addAttributionKinds(PlayRegistry& registry);
void addPurchaseKinds(PlayRegistry& registry);

// For a plug-in without configuration.
template <class PlugIn>
[[nodiscard]] PlayRegistry::MakePlugIn readPlain(const PlayConfiguration& configuration) {
    configuration.allow({});
    return [](const PlayRegistry::LaunchSwitches&) { return std::make_shared<PlugIn>(); };
}

// The products of an IAPReceiptPlugin's configuration.
[[nodiscard]] std::vector<IAPReceiptPlugin::Product>
readReceiptProducts(const PlayConfiguration& configuration);

// What a launch knows of the search-ads campaign.
[[nodiscard]] Publication publicationOf(const AdNetworkInfo& info);

} // namespace corvantile::tool
