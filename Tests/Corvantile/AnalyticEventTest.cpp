#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"

#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "Corvantile/Plugin/Analytic/DefaultEvent.hpp"
#include "CorvantileTest/ScriptedReachability.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::AnalyticEventTest {

using Status = NetworkReachabilityStatus;

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
    void change(Status status) {
        platform_->reachability().set(status);
        platform_->runUntilIdle();
    }
    // What an event of this moment says of the connection.
    static std::string status() {
        return *AnalyticEvent("e", {}).params->at("connection_status").as<std::string>();
    }
};

TEST_F(Events, TellTheConnectionStatusThatIsKnownOnceTheAppListens) {
    change(Status::reachableViaCellular);
    EXPECT_EQ(status(), "unknow");
    NetworkReachability::shared()->startListening();
    EXPECT_EQ(status(), "unknow");
    const std::pair<Status, const char*> steps[] = {{Status::reachableViaEthernetOrWiFi, "wifi"},
                                                    {Status::unknown, "wifi"},
                                                    {Status::notReachable, "not_vailable"},
                                                    {static_cast<Status>(99), "not_vailable"},
                                                    {Status::reachableViaCellular, "cellular"}};
    for (const auto& [reported, told] : steps) {
        change(reported);
        EXPECT_EQ(status(), told);
    }

    EXPECT_THAT(platform_->reachability().hosts(), testing::ElementsAre("www.example.com"));

    const std::weak_ptr<NetworkReachability> first = NetworkReachability::shared();
    platform_->reachability().set(Status::notReachable); // still waiting when the process ends
    platform_ = TestPlatform::relaunch(std::move(platform_));
    EXPECT_TRUE(first.expired());
    EXPECT_EQ(status(), "unknow");
}

using ReachabilityDeathTest = ProcessTest;

TEST_F(ReachabilityDeathTest, AHostThatCannotBeWatchedEndsTheProcess) {
    platform_->reachability().refuse("www.example.com");
    EXPECT_DEATH(static_cast<void>(NetworkReachability::shared()),
                 "Fatal error: The platform refuses to watch www\\.example\\.com\\.\n$");
}

TEST_F(Events, HaveAConnectionStatusAmongParametersThatAreThere) {
    EXPECT_EQ(describe(AnalyticEvent("store", {{"connection_status", 5}, {"a", "b"}})),
              R"(AnalyticEvent(name: "store", params: Optional(["a": "b", "connection_status": "unknow"])))");
    EXPECT_EQ(describe(AnalyticEvent("store")), R"(AnalyticEvent(name: "store", params: nil))");
}

// Those that purchases send are told in the story of a year.
TEST_F(Events, DefaultEventsHaveTheirNamesAndParameters) {
    const auto err =
        std::make_exception_ptr(NSError("keychain", -25299, {{"NSLocalizedDescription", "Duplicate."}}));
    const struct {
        DefaultEvent event;
        std::string name;
        std::optional<EventParameters> params;
    } cases[] = {
        {DefaultEvent::locksmithUpdateFirstdate(err),
         "locksmith_update_firstdate",
         {{{"error", "Duplicate."}}}},
        {DefaultEvent::manageSubscription(), "manage_subscription", {}},
        {DefaultEvent::store(), "store", {}},
        {DefaultEvent::directStore(), "direct_store", {}},
        {DefaultEvent::directStoreClick(), "direct_store_click", {}},
    };
    for (const auto& [known, name, params] : cases) {
        auto event = known.event();
        if (event.params) event.params->erase("connection_status");
        EXPECT_EQ(event.name, name);
        EXPECT_EQ(event.params, params) << name;
    }
}

} // namespace corvantile::AnalyticEventTest
