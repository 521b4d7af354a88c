#pragma once

#include "CorvantileLocalStore/Catalogue/Period.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "CorvantilePlatform/Store/SKProduct.hpp"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

enum class ProductKind { consumable, nonConsumable, nonRenewing, autoRenewing };

// `Consumable`, `NonConsumable`, `NonRenewingSubscription`, `RecurringSubscription`.
[[nodiscard]] CORVANTILE_API std::string_view label(ProductKind kind);

enum class OfferMode { free, payAsYouGo, payUpFront };

// A better price for a while.
struct SubscriptionOffer {
    std::string identifier{}; // empty for an introductory offer
    OfferMode mode = OfferMode::free;
    Period period{};
    int numberOfPeriods = 1; // more than one only where each is paid as it comes
    NSDecimalNumber price{}; // of each payment; zero when free

    friend bool operator==(const SubscriptionOffer&, const SubscriptionOffer&) = default;
};

struct ProductLocalization {
    std::string locale{}; // `en_US`
    std::string displayName{};
    std::string description{};
};

struct CatalogueProduct {
    std::string identifier{};
    std::string referenceName{};
    ProductKind kind = ProductKind::consumable;
    NSDecimalNumber price{};
    bool isFamilyShareable = false;
    std::vector<ProductLocalization> localizations{};

    // Of an auto-renewing subscription.
    std::string groupIdentifier{};
    int rank = 0; // within the group, 1 being the highest
    Period period{};
    std::optional<SubscriptionOffer> introductoryOffer{};
    std::vector<SubscriptionOffer> promotionalOffers{};
    std::vector<SubscriptionOffer> codeOffers{};
};

struct CatalogueGroup {
    std::string identifier{};
    std::string name{};
};

// What a store sells. A default-constructed one sells nothing.
class CORVANTILE_API Catalogue {
public:
    std::vector<CatalogueGroup> groups{};
    std::string version{};        // of the file: `4.0`
    std::string locale = "en_US"; // of titles and descriptions
    PriceLocale priceLocale{.currencyCode = "USD", .regionCode = "US"};
    bool hasBillingGracePeriod = false;

    // False: there is a product with this identifier already, and it stays.
    bool add(CatalogueProduct product);

    // In the order of the file: plain products, non-renewing subscriptions, groups.
    [[nodiscard]] const std::vector<CatalogueProduct>& products() const { return products_; }

    // nullptr when it is not sold. Borrowed from the catalogue.
    [[nodiscard]] const CatalogueProduct* product(std::string_view identifier) const;

private:
    std::vector<CatalogueProduct> products_;
    std::map<std::string, std::size_t, std::less<>> places_;
};

// The product as an app sees it, its texts in the catalogue's locale, else its language, else the first.
[[nodiscard]] CORVANTILE_API std::shared_ptr<SKProduct> makeProduct(const Catalogue& catalogue,
                                                                    const CatalogueProduct& product);

} // namespace corvantile
