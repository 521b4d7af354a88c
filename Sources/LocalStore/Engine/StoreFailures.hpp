#pragma once

#include "LocalStore/Engine/StoreRecords.hpp"
#include "Platform/Foundation/NSError.hpp"

namespace corvantile {

// With the text that goes with the code.
[[nodiscard]] StoreFailure storeFailure(SKErrorCode code);

// In storeErrorDomain.
[[nodiscard]] NSError storeError(const StoreFailure& failure);

} // namespace corvantile
