#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <string>

namespace corvantile {

inline constexpr const char* localStoreErrorDomain = "corvantile.localstore";

enum class LocalStoreErrorCode : int {
    unreadableCatalogue = 1,
    unknown = 2,    // no such product, transaction or subscription
    impossible = 3, // not in this state of things, or not something that this store plays
    storage = 4,    // what was asked could not be kept, so it was not done
};

// An error of the local store that says `message`.
[[nodiscard]] CORVANTILE_API NSError localStoreError(LocalStoreErrorCode code, std::string message);

} // namespace corvantile
