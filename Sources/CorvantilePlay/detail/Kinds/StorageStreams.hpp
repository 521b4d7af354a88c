#pragma once

#include "CorvantilePlay/detail/Kinds/Follower.hpp"

// Each makes an event of everything that a storage plug-in publishes, until the bag goes.
namespace corvantile::tool {

void followUserPreference(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);
void followDatabasePlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);
void followFirstDatePlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag);

} // namespace corvantile::tool
