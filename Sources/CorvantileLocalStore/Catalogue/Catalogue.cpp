#include "CorvantileLocalStore/Catalogue/Catalogue.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

namespace {

std::string_view languageOf(std::string_view locale) { return locale.substr(0, locale.find_first_of("_-@")); }

const ProductLocalization* bestLocalization(const std::vector<ProductLocalization>& all,
                                            std::string_view locale) {
    const auto plain = locale.substr(0, locale.find('@'));
    const auto same =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.locale == plain; });
    if (same != all.end()) return &*same;
    const auto alike = std::find_if(all.begin(), all.end(), [&](const auto& one) {
        return languageOf(one.locale) == languageOf(locale);
    });
    if (alike != all.end()) return &*alike;
    return all.empty() ? nullptr : &all.front();
}

} // namespace

std::string_view label(ProductKind kind) {
    switch (kind) {
    case ProductKind::consumable: return "Consumable";
    case ProductKind::nonConsumable: return "NonConsumable";
    case ProductKind::nonRenewing: return "NonRenewingSubscription";
    case ProductKind::autoRenewing: return "RecurringSubscription";
    }
    return "";
}

bool Catalogue::add(CatalogueProduct product) {
    if (!places_.emplace(product.identifier, products_.size()).second) return false;
    products_.push_back(std::move(product));
    return true;
}

const CatalogueProduct* Catalogue::product(std::string_view identifier) const {
    const auto found = places_.find(identifier);
    return found == places_.end() ? nullptr : &products_[found->second];
}

std::shared_ptr<SKProduct> makeProduct(const Catalogue& catalogue, const CatalogueProduct& product) {
    const auto* const texts = bestLocalization(product.localizations, catalogue.locale);
    return std::make_shared<SKProduct>(product.identifier, product.price, catalogue.priceLocale,
                                       texts ? texts->displayName : std::string(),
                                       texts ? texts->description : std::string());
}

} // namespace corvantile
