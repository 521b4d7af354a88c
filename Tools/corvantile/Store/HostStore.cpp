#include "Tools/corvantile/Store/HostStore.hpp"

#include "Tools/corvantile/Host.hpp"

namespace corvantile::tool {

LocalStore& storeOf(Host& host) { return host.process().platform().store(); }

} // namespace corvantile::tool
