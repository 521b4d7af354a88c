#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"

#include "Corvantile/Plugin/Analytic/AdjustEvent.hpp"
#include "TestPlatform/RecordingAdjust.hpp"
#include "TestPlatform/RecordingConsole.hpp"
#include "Tests/Corvantile/ProcessTest.hpp"

#include <gmock/gmock.h>

#include <unordered_set>

namespace corvantile {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

constexpr const char* fatal =
    "^Corvantile/AdjustAnalyticComponent:43: Fatal error: Fail to load event file\n$";

AdjustAnalyticComponent load(const std::string& file) {
    TestDevice device;
    const auto platform = TestPlatform::launch(device, {.resources = {{"events.json", file}}});
    return AdjustAnalyticComponent("events", {"a", "b"});
}

TEST(EventTokenFile, IsReadInItsOrder) {
    const auto file =
        R"([{"token": "t1", "name": "store", "note": {"by": ["anyone"]}}, {"name": "", "token": ""},
        {"name": "caf\u00e9", "token": "t2", "token": "t3"}, {"token": "t4", "name": "store"}])";
    const auto component = load(file);
    EXPECT_THAT(component.events(),
                UnorderedElementsAre(Pair("store", "t4"), Pair("", ""), Pair("caf\u00e9", "t3")));
    EXPECT_THAT(component.ignoredEventNames(), ElementsAre("a", "b"));
}

TEST(EventTokenFileDeathTest, EndsTheProcessWhenItIsAnythingElse) {
    for (const std::string file :
         {"", "{}", R"({"token": "t", "name": "n"})", "[1]", "[null]", "[[]]", R"([{"token": "t"}])",
          R"([{"name": "n"}])", R"([{"token": 1, "name": "n"}])", R"([{"token": "t", "name": null}])",
          R"([{"token": "t", "name": "n"}, {}])", R"([{"token": "t", "name": "n"})",
          "[{\"token\": \"\xFF\", \"name\": \"n\"}]", "[] []"})
        EXPECT_DEATH(load(file), fatal) << file;
    TestDevice device;
    const auto platform = TestPlatform::launch(device);
    EXPECT_DEATH(AdjustAnalyticComponent("events"), fatal);
}

TEST(AdjustEvents, AreToldApartByNameAlone) {
    const std::unordered_set<AdjustEvent> rows{{"t1", "n"}, {"t2", "n"}, {"t1", "m"}};
    EXPECT_EQ(rows.size(), 2u);
    EXPECT_EQ(encodeJSON(AdjustEvent{"t", "n"}), R"({"token":"t","name":"n"})");
}

class SendingToAdjust : public ProcessTest {
protected:
    std::vector<std::string> lines() { return platform_->console().lines(); }
    static NSDecimalNumber decimal(const char* text) { return *NSDecimalNumber::fromText(text); }

    RecordingAdjust& adjust_ = platform_->adjust();
    AdjustAnalyticComponent component_{{{"store", "T"}}, {"ignored"}};
};

TEST_F(SendingToAdjust, TakesTokenAndRevenueAlong) {
    component_.track(AnalyticEvent("store", {{"level", 3}}));
    component_.track(AnalyticEvent("store"), decimal("4.99"), "USD");
    component_.track(AnalyticEvent("Store"));
    component_.track(AnalyticEvent("lost"), decimal("1"), "USD");

    const auto events = adjust_.callsOf<ADJEvent>();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].eventToken() + events[1].eventToken(), "TT");
    EXPECT_FALSE(events[0].revenue());
    EXPECT_EQ(events[1].revenue()->amount, 4.99);
    EXPECT_EQ(events[1].revenue()->currency, "USD");
    EXPECT_THAT(lines(), ElementsAre("Adjust --- tracked store - T", "Adjust --- tracked store - T",
                                     "Adjust --- not found Store", "Adjust --- not found lost"));
}

TEST_F(SendingToAdjust, ReplacesTheIgnoredNames) {
    EXPECT_FALSE(component_.shouldTrack(AnalyticEvent("ignored")));
    component_.ignore({"a", "b"});
    component_.ignore({"c"});
    EXPECT_THAT(component_.ignoredEventNames(), ElementsAre("c"));
    component_.setIgnoredEventNames({});
    EXPECT_TRUE(component_.shouldTrack(AnalyticEvent("c")));
}

TEST_F(SendingToAdjust, SendsASubscriptionWithTheReceipt) {
    const std::string receipt("\0\xFF", 2);
    device_.setAppStoreReceipt(receipt);
    component_.trackIAPSubs(decimal("4.90"), "USD", "1000", TestDevice::startDate, "US");
    component_.trackIAPSubs(decimal("0"), "", "", std::nullopt, std::nullopt);

    const auto sent = adjust_.callsOf<ADJSubscription>();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].receipt(), receipt);
    EXPECT_EQ(sent[0].price(), decimal("4.9"));
    EXPECT_EQ(sent[0].currency() + sent[0].transactionId(), "USD1000");
    EXPECT_EQ(sent[0].transactionDate(), TestDevice::startDate);
    EXPECT_EQ(sent[0].salesRegion(), "US");
    EXPECT_FALSE(sent[1].transactionDate() || sent[1].salesRegion());
    EXPECT_THAT(lines(), ElementsAre("Adjust IAP track---  4.9 USD 1000 2024-01-02 03:04:05 +0000 US",
                                     "Adjust IAP track---  0    "));
}

TEST_F(SendingToAdjust, SendsNoSubscriptionWithoutReceiptOrWhenRefused) {
    const auto track = [&] { component_.trackIAPSubs(decimal("4.99"), "USD", "1000", std::nullopt, "US"); };
    track();
    device_.setAppStoreReceipt("");
    track();
    EXPECT_THAT(lines(), IsEmpty());

    device_.setAppStoreReceipt("receipt");
    adjust_.setRefusesSubscriptions(true);
    track();
    EXPECT_THAT(lines(), ElementsAre("Adjust IAP track---      US"));
    EXPECT_THAT(adjust_.calls(), IsEmpty());
}

} // namespace
} // namespace corvantile
