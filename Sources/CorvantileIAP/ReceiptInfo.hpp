#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace corvantile {

// Stands in a record for a value that the receipt lacks.
struct DecodingDefaults {
    DecodingDefaults() = delete;

    // The first second of year 1, UTC: earlier than any purchase, so nothing that ended then is still on.
    static constexpr Date invalidDate{-63114076800.0};
};

// One transaction of the store. A date that a receipt lacks, or that cannot be read, is
// DecodingDefaults::invalidDate; a date is absent only from a record that code has made.
struct ReceiptInfo {
    std::int64_t transactionID = 0;
    std::string productID{};
    std::int64_t quantity = 1;
    std::optional<std::int64_t> webOrderLineItemID{};
    Date purchaseDate = DecodingDefaults::invalidDate;
    std::optional<Date> expiresDate{}; // invalidDate for what does not expire
    bool isTrial = false;
    std::optional<bool> isInIntroOffer{};
    std::int64_t originalTransactionID = 0; // of the first purchase its own
    std::optional<Date> originalPurchaseDate{};
    // Empty where the receipt has none.
    std::string ownershipType{}; // PURCHASED or FAMILY_SHARED
    std::string subscriptionGroupIdentifier{};
    std::string promotionalOfferID{};

    friend bool operator==(const ReceiptInfo&, const ReceiptInfo&) = default;
};

// The newest purchase first, of two at one time the larger transaction identifier; then whatever else
// differs, so that no two different records are equivalent. Reversed, the first purchase comes first.
[[nodiscard]] CORVANTILE_API bool operator<(const ReceiptInfo& left, const ReceiptInfo& right);

[[nodiscard]] CORVANTILE_API std::string describe(const ReceiptInfo& record);

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
