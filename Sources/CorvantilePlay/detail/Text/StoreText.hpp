#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <chrono>
#include <string>
#include <string_view>

// What people write and read of a store.
namespace corvantile::tool {

// `90s`, `2h`, `31d`, `1w`, `1y`: a year has 365 days. What cannot be read is a UsageError.
[[nodiscard]] std::chrono::duration<double> parseStoreDuration(std::string_view text);

// `cancelled`, `network` …; an unknown reason is a UsageError that lists them.
[[nodiscard]] SKErrorCode parseFailure(const std::string& text);

// The product's identifier, of which the end alone may be given: `coins100` for `com.example.coins100`. A
// UsageError when the store sells no such product, or several.
[[nodiscard]] std::string productNamed(const Catalogue& catalogue, const std::string& text);

// `purchased`; of a state that has no name here, that it has none.
[[nodiscard]] std::string_view labelOf(SKPaymentTransactionState state);

[[nodiscard]] std::string describe(const StoreSubscription& subscription);

// As rows of one table: what was sold, and what is still under way without being sold.
[[nodiscard]] Cells cellsOf(const StorePurchase& purchase);
[[nodiscard]] Cells cellsOf(const StoreTransaction& transaction);

// The same for programs.
[[nodiscard]] EventValue::Map fieldsOf(const StorePurchase& purchase);
[[nodiscard]] EventValue::Map fieldsOf(const StoreTransaction& transaction);

} // namespace corvantile::tool
