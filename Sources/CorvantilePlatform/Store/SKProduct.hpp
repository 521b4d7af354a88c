#pragma once

#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <optional>
#include <string>
#include <utility>

namespace corvantile {

// Of a locale what prices need: "USD", "US". A locale may lack either.
struct PriceLocale {
    std::optional<std::string> currencyCode{};
    std::optional<std::string> regionCode{};

    friend bool operator==(const PriceLocale&, const PriceLocale&) = default;
};

// A product as the store sells it. Immutable and shared.
class SKProduct {
public:
    SKProduct(std::string productIdentifier, NSDecimalNumber price, PriceLocale priceLocale,
              std::string localizedTitle = {}, std::string localizedDescription = {})
        : productIdentifier_(std::move(productIdentifier)),
          localizedTitle_(std::move(localizedTitle)),
          localizedDescription_(std::move(localizedDescription)),
          price_(price),
          priceLocale_(std::move(priceLocale)) {}

    [[nodiscard]] const std::string& productIdentifier() const { return productIdentifier_; }
    [[nodiscard]] const std::string& localizedTitle() const { return localizedTitle_; }
    [[nodiscard]] const std::string& localizedDescription() const { return localizedDescription_; }
    [[nodiscard]] const NSDecimalNumber& price() const { return price_; }
    [[nodiscard]] const PriceLocale& priceLocale() const { return priceLocale_; }

private:
    std::string productIdentifier_;
    std::string localizedTitle_;
    std::string localizedDescription_;
    NSDecimalNumber price_;
    PriceLocale priceLocale_;
};

} // namespace corvantile
