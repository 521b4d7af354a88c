#pragma once

#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"
#include "CorvantileLocalStore/Engine/detail/StoreLedger.hpp"

#include <string>

namespace corvantile {

// What a command names. Each throws NSError (localStoreErrorDomain, unknown) when there is none.

[[nodiscard]] const CatalogueProduct& requireProduct(const Catalogue& catalogue,
                                                     const std::string& identifier);
[[nodiscard]] const StoreSubscription& requireSubscription(const StoreLedger& ledger,
                                                           const std::string& productIdentifier);
// The oldest payment for the product that nobody has decided.
[[nodiscard]] const StoreTransaction& requireUndecided(const StoreLedger& ledger,
                                                       const std::string& productIdentifier);
// By its own identifier, or the latest of the product.
[[nodiscard]] const StorePurchase& requirePurchase(const StoreLedger& ledger, const std::string& identifier);

} // namespace corvantile
