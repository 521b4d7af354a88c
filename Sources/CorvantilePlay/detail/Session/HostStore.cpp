#include "CorvantilePlay/detail/Session/HostStore.hpp"

#include "CorvantilePlay/detail/Session/Host.hpp"

namespace corvantile::tool {

LocalStore& storeOf(Host& host) { return host.process().platform().store(); }

} // namespace corvantile::tool
