#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <string>
#include <utility>

namespace corvantile {

inline constexpr const char* localStoreErrorDomain = "corvantile.localstore";

enum class LocalStoreErrorCode : int {
    unreadableCatalogue = 1,
    unknown = 2,    // no such product, transaction or subscription
    impossible = 3, // not in this state of things, or not something that this store plays
    storage = 4,    // the change could not be stored, so it was not made
};

// An error of the local store with this description.
[[nodiscard]] inline NSError localStoreError(LocalStoreErrorCode code, std::string message) {
    return NSError(localStoreErrorDomain, static_cast<int>(code),
                   {{NSError::localizedDescriptionKey, std::move(message)}});
}

} // namespace corvantile
