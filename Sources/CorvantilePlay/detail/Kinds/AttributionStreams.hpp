#pragma once

#include "Corvantile/Plugin/AdNetwork/AdNetworkPluggable.hpp"
#include "CorvantilePlay/detail/Kinds/Follower.hpp"

namespace corvantile::tool {

void followAdNetworkPlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);

// What a launch has learnt of the search-ads campaign.
[[nodiscard]] Publication publicationOf(const AdNetworkInfo& info);

} // namespace corvantile::tool
