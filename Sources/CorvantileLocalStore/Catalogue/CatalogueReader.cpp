#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"

#include "CorvantileLocalStore/Catalogue/detail/CatalogueNode.hpp"
#include "CorvantileLocalStore/Catalogue/detail/Storefront.hpp"
#include "CorvantileLocalStore/LocalStoreError.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace corvantile {

namespace {

constexpr int latestMajorVersion = 5;
constexpr int mostOfferPeriods = 366;

template <class Value>
struct Named {
    std::string_view name;
    Value value;
};

constexpr std::array kinds{Named<ProductKind>{"Consumable", ProductKind::consumable},
                           Named<ProductKind>{"NonConsumable", ProductKind::nonConsumable},
                           Named<ProductKind>{"NonRenewingSubscription", ProductKind::nonRenewing}};
constexpr std::array modes{Named<OfferMode>{"free", OfferMode::free},
                           Named<OfferMode>{"payAsYouGo", OfferMode::payAsYouGo},
                           Named<OfferMode>{"payUpFront", OfferMode::payUpFront}};

template <class Value, std::size_t size>
Value choice(const CatalogueNode& node, const std::array<Named<Value>, size>& all) {
    const auto& text = node.text();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& one) { return one.name == text; });
    if (found != all.end()) return found->value;
    std::string names;
    for (const auto& one : all) names.append(names.empty() ? "" : ", ").append(one.name);
    node.fail("one of " + names);
}

NSDecimalNumber price(const CatalogueNode& product) {
    const auto node = product.member("displayPrice");
    const auto number = node.isPresent() ? NSDecimalNumber::fromText(node.text()) : std::nullopt;
    if (!number || number->isNegative()) node.fail("a price as a text with a point, such as \"1.99\"");
    return *number;
}

Period period(const CatalogueNode& owner, const char* key) {
    const auto node = owner.member(key);
    const auto found = periodFromText(node.text());
    if (!found) node.fail("a period such as P1W, P3M or P1Y");
    return *found;
}

SubscriptionOffer offer(const CatalogueNode& node) {
    SubscriptionOffer read{.identifier = node.text("offerID", node.text("referenceName", "")),
                           .mode = choice(node.member("paymentMode"), modes),
                           .period = period(node, "subscriptionPeriod")};
    // The editor leaves the former price and number behind when an offer becomes free.
    if (read.mode != OfferMode::free) read.price = price(node);
    if (read.mode != OfferMode::payAsYouGo) return read;
    read.numberOfPeriods = node.integer("numberOfPeriods", 1);
    if (read.numberOfPeriods < 1 || read.numberOfPeriods > mostOfferPeriods)
        node.member("numberOfPeriods").fail("a number from 1 to " + std::to_string(mostOfferPeriods));
    return read;
}

std::vector<SubscriptionOffer> offers(const CatalogueNode& product, const char* key) {
    std::vector<SubscriptionOffer> all;
    product.forEach(key, [&](const CatalogueNode& node) { all.push_back(offer(node)); });
    return all;
}

std::optional<SubscriptionOffer> introductoryOffer(const CatalogueNode& product) {
    if (const auto node = product.member("introductoryOffer"); node.isPresent()) return offer(node);
    auto listed = offers(product, "introductoryOffers");
    if (listed.empty()) return std::nullopt;
    auto& first = listed.front();
    first.identifier.clear();
    return std::move(first);
}

CatalogueProduct plainProduct(const CatalogueNode& node, ProductKind kind) {
    CatalogueProduct product{.identifier = node.member("productID").text(),
                             .referenceName = node.text("referenceName", ""),
                             .kind = kind,
                             .price = price(node),
                             .isFamilyShareable = node.boolean("familyShareable", false)};
    if (product.identifier.empty()) node.member("productID").fail("an identifier");
    node.forEach("localizations", [&](const CatalogueNode& texts) {
        product.localizations.push_back(
            {texts.text("locale", ""), texts.text("displayName", ""), texts.text("description", "")});
    });
    return product;
}

CatalogueProduct subscription(const CatalogueNode& node, const CatalogueGroup& group) {
    auto product = plainProduct(node, ProductKind::autoRenewing);
    product.groupIdentifier = group.identifier;
    product.rank = node.integer("groupNumber", 1);
    product.period = period(node, "recurringSubscriptionPeriod");
    product.introductoryOffer = introductoryOffer(node);
    product.promotionalOffers = offers(node, "adHocOffers");
    product.codeOffers = offers(node, "codeOffers");
    return product;
}

void add(Catalogue& catalogue, CatalogueProduct product, const CatalogueNode& node) {
    if (!catalogue.add(std::move(product)))
        node.member("productID").fail("an identifier that no product before it has");
}

void readGroup(Catalogue& catalogue, const CatalogueNode& node) {
    const CatalogueGroup group{node.member("id").text(), node.text("name", "")};
    catalogue.groups.push_back(group);
    node.forEach("subscriptions", [&](const CatalogueNode& product) {
        add(catalogue, subscription(product, group), product);
    });
}

void readSettings(Catalogue& catalogue, const CatalogueNode& settings) {
    catalogue.hasBillingGracePeriod = settings.boolean("_billingGracePeriodEnabled", false);
    catalogue.locale = settings.text("_locale", catalogue.locale);
    std::optional<std::string> region;
    if (const auto storefront = settings.member("_storefront"); storefront.isPresent()) {
        region = regionOfStorefront(storefront.text());
        if (!region) storefront.fail("a country's code of three letters, such as \"USA\"");
    }
    catalogue.priceLocale = priceLocaleOf(catalogue.locale, region);
}

std::string version(const CatalogueNode& root) {
    const auto node = root.member("version");
    node.requireObject();
    const auto major = node.member("major").integer();
    if (major < 1 || major > latestMajorVersion)
        node.member("major").fail("a version from 1 to " + std::to_string(latestMajorVersion));
    return std::to_string(major) + "." + std::to_string(node.integer("minor", 0));
}

Catalogue catalogueFrom(const CatalogueNode& root) {
    root.requireObject();
    Catalogue catalogue;
    catalogue.version = version(root);
    if (const auto settings = root.member("settings"); settings.isPresent())
        readSettings(catalogue, settings);
    root.forEach("products", [&](const CatalogueNode& node) {
        add(catalogue, plainProduct(node, choice(node.member("type"), kinds)), node);
    });
    root.forEach("nonRenewingSubscriptions", [&](const CatalogueNode& node) {
        add(catalogue, plainProduct(node, ProductKind::nonRenewing), node);
    });
    root.forEach("subscriptionGroups", [&](const CatalogueNode& node) { readGroup(catalogue, node); });
    return catalogue;
}

// `syntax error while parsing value - unexpected end of input; expected '}'`, without the parser's own place.
std::string syntaxMessage(std::string_view what) {
    const auto column = what.find(", column ");
    const auto message = column == std::string_view::npos ? column : what.find(": ", column);
    return std::string(message == std::string_view::npos ? what : what.substr(message + 2));
}

} // namespace

Catalogue readCatalogue(std::string_view text, std::string_view fileName) {
    auto message = std::string(fileName);
    try {
        if (isTooDeepJSON(text))
            throw CatalogueMismatch("", "less nesting",
                                    "more than " + std::to_string(greatestJSONDepth) + " levels");
        const auto json = nlohmann::json::parse(text);
        return catalogueFrom(CatalogueNode(json));
    } catch (const nlohmann::json::parse_error& error) {
        // `byte` counts from one and names the last byte that was read.
        const auto before = text.substr(0, error.byte == 0 ? 0 : error.byte - 1);
        const auto line = 1 + std::count(before.begin(), before.end(), '\n');
        message += ", line " + std::to_string(line) + ": " + syntaxMessage(error.what()) + ".";
    } catch (const nlohmann::json::exception& error) { // a number that nothing can hold
        const std::string_view what = error.what();
        message += ": " + std::string(what.substr(what.find("] ") + 2)) + ".";
    } catch (const CatalogueMismatch& error) {
        if (!error.keyPath.empty()) message += ", " + error.keyPath;
        message += ": expected " + error.expected + ", found " + error.found + ".";
    }
    throw localStoreError(LocalStoreErrorCode::unreadableCatalogue, message);
}

} // namespace corvantile
