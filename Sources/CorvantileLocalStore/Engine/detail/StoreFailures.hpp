#pragma once

#include "CorvantileLocalStore/Engine/StoreRecords.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

namespace corvantile {

// With the text that goes with the code.
[[nodiscard]] StoreFailure storeFailure(SKErrorCode code);

// In storeErrorDomain.
[[nodiscard]] NSError storeError(const StoreFailure& failure);

} // namespace corvantile
