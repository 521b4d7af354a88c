#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"

#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "Corvantile/Plugin/Analytic/DefaultEvent.hpp"
#include "Platform/Foundation/NSError.hpp"
#include "TestPlatform/ScriptedReachability.hpp"
#include "Tests/Corvantile/ProcessTest.hpp"

#include <cstddef>
#include <cstdint>
#include <variant>

namespace corvantile {
namespace {

using Status = NetworkReachabilityStatus;
using testing::ElementsAre;
using testing::Pair;

TEST(EventValue, DescribesItself) {
    const auto price = *NSDecimalNumber::fromText("4.990");
    EXPECT_EQ(EventValue(~std::uint64_t{0}).description(), "18446744073709551615");
    EXPECT_NE(EventValue(static_cast<const char*>(nullptr)).as<EventValue::Null>(), nullptr);
    const EventValue value(
        EventValue::Map{{"a", EventValue::List{nullptr, "q\"", 1, 2.0, true, price, Date{}}},
                        {"b", EventValue::Map{}},
                        {"c", OpaqueObject{nullptr, "<view>"}}});
    EXPECT_EQ(
        value.description(),
        R"(["a": [<null>, "q\"", 1, 2.0, true, 4.99, 2001-01-01 00:00:00 +0000], "b": [:], "c": <view>])");
}

class Events : public ProcessTest {
protected:
    void reach(Status status) {
        platform_->reachability().set(status);
        NetworkReachability::shared()->startListening();
        platform_->runUntilIdle();
    }
};

TEST_F(Events, TellTheConnectionStatusAmongParametersThatAreThere) {
    EXPECT_EQ(AnalyticEvent("store").params, std::nullopt);
    EXPECT_THAT(*AnalyticEvent("store", {}).params, ElementsAre(Pair("connection_status", "unknow")));
    EXPECT_THAT(*AnalyticEvent("store", {{"connection_status", 5}, {"a", "b"}}).params,
                ElementsAre(Pair("a", "b"), Pair("connection_status", "unknow")));

    const AnalyticEvent early("store", {});
    const std::pair<Status, const char*> cases[] = {{Status::notReachable, "not_vailable"},
                                                    {Status::reachableViaEthernetOrWiFi, "wifi"},
                                                    {Status::reachableViaCellular, "cellular"}};
    for (const auto& [status, text] : cases) {
        reach(status);
        EXPECT_THAT(*AnalyticEvent("store", {}).params, ElementsAre(Pair("connection_status", text)));
    }
    EXPECT_EQ(describe(early),
              R"(AnalyticEvent(name: "store", params: Optional(["connection_status": "unknow"])))");
    EXPECT_EQ(describe(AnalyticEvent("store")), R"(AnalyticEvent(name: "store", params: nil))");
}

TEST_F(Events, DefaultEventsHaveTheirNamesAndParameters) {
    const auto price = *NSDecimalNumber::fromText("4.99");
    const auto err =
        std::make_exception_ptr(NSError("keychain", -25299, {{"NSLocalizedDescription", "Duplicate."}}));
    const EventParameters failure{{"error", "Duplicate."}};
    const EventParameters revenue{{"value", price}, {"currency", "USD"}};
    const struct {
        DefaultEvent event;
        std::string name;
        std::optional<EventParameters> params;
    } cases[] = {
        {DefaultEvent::locksmithCreateFirstdate(err), "locksmith_create_firstdate", failure},
        {DefaultEvent::locksmithUpdateFirstdate(err), "locksmith_update_firstdate", failure},
        {DefaultEvent::trialConversion("p.1", price, "USD"), "trial_conversion_p.1", revenue},
        {DefaultEvent::trialSubscribe("p.1", price, "USD"), "trial_subscribe_p.1", revenue},
        {DefaultEvent::renewSubscribe("p/ 1", price, "USD"), "renew_p/ 1", revenue},
        {DefaultEvent::subscribe("", price, "USD"), "subscribe_", revenue},
        {DefaultEvent::totalSubscription(price, "USD"), "total_subscription", revenue},
        {DefaultEvent::gracePeriodEnter("p.1"), "enter_grace_period", EventParameters{{"value", "p.1"}}},
        {DefaultEvent::manageSubscription(), "manage_subscription", std::nullopt},
        {DefaultEvent::store(), "store", std::nullopt},
        {DefaultEvent::directStore(), "direct_store", std::nullopt},
        {DefaultEvent::directStoreClick(), "direct_store_click", std::nullopt},
        {DefaultEvent::ostrelValidatedInAppPurchase(), "ostrel_in_app_purchase", std::nullopt},
    };
    std::size_t index = 0;
    for (auto [known, name, params] : cases) {
        if (params) params->emplace("connection_status", "unknow");
        const auto event = known.event();
        EXPECT_EQ(event.name, name);
        EXPECT_EQ(event.params, params) << name;
        EXPECT_EQ(known.known().index(), index++) << name;
    }
    EXPECT_EQ(index, std::variant_size_v<DefaultEvent::Case>);
}

} // namespace
} // namespace corvantile
