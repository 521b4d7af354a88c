#include "CorvantileLocalStore/Catalogue/CatalogueReader.hpp"
#include "Tests/CorvantileLocalStore/StoreFixture.hpp"

namespace corvantile::CatalogueReaderTest {

std::string text(const SubscriptionOffer& offer) {
    static constexpr const char* modes[] = {" free ", " payAsYouGo ", " payUpFront "};
    return offer.identifier + modes[static_cast<int>(offer.mode)] + std::to_string(offer.numberOfPeriods) +
           "x" + describe(offer.period) + " " + offer.price.description();
}

std::string text(const Catalogue& catalogue, const CatalogueProduct& product) {
    const auto seen = makeProduct(catalogue, product);
    std::string all = product.identifier + " " + std::string(label(product.kind)) + " " +
                      seen->price().description() + " '" + seen->localizedTitle() + "'";
    if (product.kind != ProductKind::autoRenewing) return all;
    all +=
        " " + product.groupIdentifier + "#" + std::to_string(product.rank) + " " + describe(product.period);
    if (product.introductoryOffer) all += ";" + text(*product.introductoryOffer);
    for (const auto& offer : product.promotionalOffers) all += "; promo " + text(offer);
    for (const auto& offer : product.codeOffers) all += "; code " + text(offer);
    return all;
}

std::string text(const Catalogue& catalogue) {
    auto all = catalogue.version + " " + catalogue.priceLocale.regionCode.value_or("?") + " " +
               catalogue.priceLocale.currencyCode.value_or("?") +
               (catalogue.hasBillingGracePeriod ? " grace" : "") + "\n";
    for (const auto& product : catalogue.products()) all += text(catalogue, product) + "\n";
    return all;
}

TEST(CatalogueReader, ReadsEveryVersionOfTheFormat) {
    constexpr std::pair<const char*, const char*> cases[] = {
        {"1.0", "1.0 US USD\ngems Consumable 1.99 'Gems'\nunlock NonConsumable 29 ''\n"},
        {"2.0",
         "2.0 CH CHF\nseason NonRenewingSubscription 12.5 'Saison'\n"
         "plan RecurringSubscription 3 '' B2B2#2 P1M; payAsYouGo 3xP1M 0.5; promo back payAsYouGo 2xP1M 1"
         "; code Fair free 1xP3D 0\n"},
        {"3.0", "3.0 JP JPY\nplan RecurringSubscription 480 '' 21000001#1 P6M; free 1xP2W 0\n"},
        {"4.0", "4.0 US USD\nplan RecurringSubscription 19.99 '' D1#1 P1Y; payUpFront 1xP3M 9.99\n"},
        {"5.0", "5.0 IE EUR grace\nplan RecurringSubscription 7.49 '' E1#1 P1W; free 1xP3D 0\n"},
    };
    for (const auto& [version, expected] : cases) EXPECT_EQ(text(catalogueOfVersion(version)), expected);
    EXPECT_EQ(sampleCatalogue().products().size(), 4u);
}

TEST(CatalogueReader, NamesFilePlaceAndWhatWasExpected) {
    const auto inProducts = [](const std::string& product) {
        return R"({"version": {"major": 2}, "products": [)" + product + "]}";
    };
    const std::string gem = R"({"productID": "gem", "type": "Consumable", "displayPrice": "1"})";
    const auto inGroup = [](const std::string& keys) {
        return R"({"version": {"major": 2}, "subscriptionGroups": [{"id": "g", "subscriptions": [)"
               R"({"productID": "a", "displayPrice": "1", )" +
               keys + "}]}]}";
    };
    const std::pair<std::string, std::string> cases[] = {
        {"{\n\"products\": [\n}",
         "f, line 3: syntax error while parsing value - unexpected '}'; expected '[', '{', or a literal."},
        {R"({"big": 1e999})", "f: number overflow parsing '1e999'."},
        {"{}", "f, version: expected an object, found nothing."},
        {R"({"version": {"major": 9}})", "f, version.major: expected a version from 1 to 5, found 9."},
        {R"({"version": {"major": 1}, "products": {}})", "f, products: expected a list, found an object."},
        {inProducts(gem + "," + gem),
         "f, products[1].productID: expected an identifier that no product before it has, found \"gem\"."},
        {inProducts(R"({"productID": "a", "type": "Consumable", "displayPrice": 1.99})"),
         "f, products[0].displayPrice: expected a text, found 1.99."},
        {inProducts(R"({"productID": "a", "type": "Consumable", "displayPrice": "1,99"})"),
         "f, products[0].displayPrice: expected a price as a text with a point, such as \"1.99\", found "
         "\"1,99\"."},
        {inProducts(R"({"productID": "a", "type": "Gift", "displayPrice": "1"})"),
         "f, products[0].type: expected one of Consumable, NonConsumable, NonRenewingSubscription, found "
         "\"Gift\"."},
        {inGroup(R"("recurringSubscriptionPeriod": "1M")"),
         "f, subscriptionGroups[0].subscriptions[0].recurringSubscriptionPeriod: expected a period such as "
         "P1W, P3M or P1Y, found \"1M\"."},
        {inGroup(R"("recurringSubscriptionPeriod": "P1M", "introductoryOffer": {"paymentMode": "payAsYouGo",
            "subscriptionPeriod": "P1M", "displayPrice": "1", "numberOfPeriods": 0})"),
         "f, subscriptionGroups[0].subscriptions[0].introductoryOffer.numberOfPeriods: expected a number "
         "from "
         "1 to 366, found 0."},
        {R"({"version": {"major": 2}, "settings": {"_storefront": "Mars"}})",
         "f, settings._storefront: expected a country's code of three letters, such as \"USA\", found "
         "\"Mars\"."},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        try {
            static_cast<void>(readCatalogue(text, "f"));
            ADD_FAILURE() << "was read";
        } catch (const NSError& error) {
            EXPECT_EQ(error.localizedDescription(), expected);
            EXPECT_EQ(error.code(), static_cast<int>(LocalStoreErrorCode::unreadableCatalogue));
        }
    }
}

TEST(Period, CountsDaysOfTheMonthFromOneStart) {
    const struct {
        const char* period;
        int times;
        const char* expected;
    } cases[] = {{"P1M", 1, "2024-02-29"}, {"P1M", 2, "2024-03-31"}, {"P1M", 13, "2025-02-28"},
                 {"P1Y", 1, "2025-01-31"}, {"P2W", 2, "2024-02-28"}, {"P3D", 1, "2024-02-03"}};
    for (const auto& [period, times, expected] : cases)
        EXPECT_EQ(dayOf(after(dayAtTen("2024-01-31"), *periodFromText(period), times)), expected) << period;
    for (const auto* wrong : {"", "P", "PM", "1M", "P0M", "P-1M", "P1", "P1MM", "P1H", "P99999Y"})
        EXPECT_FALSE(periodFromText(wrong)) << wrong;
}

} // namespace corvantile::CatalogueReaderTest
