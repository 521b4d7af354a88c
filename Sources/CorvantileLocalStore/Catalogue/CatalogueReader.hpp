#pragma once

#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <string_view>

namespace corvantile {

// Reads a StoreKit configuration file (`.storekit`), versions 1 to 5. Keys that it does not know are passed
// over. Throws NSError (localStoreErrorDomain, unreadableCatalogue), which names `fileName`, the line of a
// JSON error or the key path of anything else, and what was expected there. Threads: any.
[[nodiscard]] CORVANTILE_API Catalogue readCatalogue(std::string_view text, std::string_view fileName);

} // namespace corvantile
