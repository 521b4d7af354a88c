#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace corvantile {

// What the store means to do with one subscription. What it does not tell is absent.
struct RenewalInfo {
    // The store's numbers for why a subscription ends.
    enum class ExpirationIntent : int {
        cancelled = 1,
        billingError,
        priceRefused,
        productGone,
        unknownReason
    };

    std::string productID{};
    std::string autoRenewProductID{}; // what it renews to
    std::optional<std::int64_t> originalTransactionID{};
    std::optional<bool> willAutoRenew{};
    std::optional<ExpirationIntent> expirationIntent{}; // the store may give others than those above
    std::optional<bool> isInBillingRetryPeriod{};
    // In grace while it is in the future. One that cannot be read is DecodingDefaults::invalidDate.
    std::optional<Date> gracePeriodExpiresDate{};
    std::optional<bool> hasAcceptedPriceIncrease{};

    friend bool operator==(const RenewalInfo&, const RenewalInfo&) = default;
};

[[nodiscard]] CORVANTILE_API std::string describe(const RenewalInfo& record);

} // namespace corvantile
