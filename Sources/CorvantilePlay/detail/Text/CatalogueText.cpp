#include "CorvantilePlay/detail/Text/CatalogueText.hpp"

#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "CorvantilePlay/detail/Text/FileText.hpp"

#include <string_view>

namespace corvantile::tool {

namespace {

std::string_view label(OfferMode mode) {
    switch (mode) {
    case OfferMode::free: return "free";
    case OfferMode::payAsYouGo: return "payAsYouGo";
    case OfferMode::payUpFront: return "payUpFront";
    }
    return {};
}

bool renews(const CatalogueProduct& product) { return product.kind == ProductKind::autoRenewing; }

std::string offerText(const Catalogue& catalogue, const SubscriptionOffer& offer) {
    auto period = describe(offer.period);
    if (offer.mode == OfferMode::free) return "free for " + period;
    if (offer.mode == OfferMode::payAsYouGo) period = std::to_string(offer.numberOfPeriods) + " x " + period;
    return priceText(offer.price, catalogue) + " for " + period;
}

EventValue::Map offerFields(const SubscriptionOffer& offer) {
    return {{"mode", label(offer.mode)},
            {"period", describe(offer.period)},
            {"periods", offer.numberOfPeriods},
            {"price", offer.price}};
}

} // namespace

Catalogue readCatalogueFile(const std::filesystem::path& file) {
    return readCatalogue(readFileText(file, "a StoreKit configuration file"), file.string());
}

std::string priceText(const NSDecimalNumber& price, const Catalogue& catalogue) {
    const auto& currency = catalogue.priceLocale.currencyCode;
    return price.description() + (currency ? " " + *currency : "");
}

Cells cellsOf(const Catalogue& catalogue, const CatalogueProduct& product) {
    const auto& offer = product.introductoryOffer;
    return {product.identifier,
            std::string(label(product.kind)),
            priceText(product.price, catalogue),
            renews(product) ? describe(product.period) : "",
            offer ? offerText(catalogue, *offer) : "",
            makeProduct(catalogue, product)->localizedTitle()};
}

EventValue::Map fieldsOf(const Catalogue& catalogue, const CatalogueProduct& product) {
    EventValue::Map fields{{"product", product.identifier},
                           {"type", label(product.kind)},
                           {"price", product.price},
                           {"title", makeProduct(catalogue, product)->localizedTitle()}};
    const auto& [currency, region] = catalogue.priceLocale;
    if (currency) fields.emplace("currency", *currency);
    if (region) fields.emplace("region", *region);
    if (renews(product)) fields.emplace("period", describe(product.period));
    if (renews(product)) fields.emplace("group", product.groupIdentifier);
    if (product.introductoryOffer)
        fields.emplace("introductoryOffer", offerFields(*product.introductoryOffer));
    return fields;
}

} // namespace corvantile::tool
