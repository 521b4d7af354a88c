#include "CorvantileLocalStore/LocalStoreError.hpp"

#include <utility>

namespace corvantile {

NSError localStoreError(LocalStoreErrorCode code, std::string message) {
    return NSError(localStoreErrorDomain, static_cast<int>(code),
                   {{NSError::localizedDescriptionKey, std::move(message)}});
}

} // namespace corvantile
