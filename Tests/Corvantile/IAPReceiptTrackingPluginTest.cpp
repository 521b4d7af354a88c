#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "CorvantileTest/ForEachSeed.hpp"
#include "HostCore/HostCore.hpp"
#include "Tests/Corvantile/PurchaseFakes.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile::IAPReceiptTrackingPluginTest {

using Delivery = IAPReceiptTrackingPlugin::Delivery;

constexpr const char* keychainService = "com.example.app";

// A process with the plug-in and what it needs, on day 9.
struct Host {
    explicit Host(TestDevice& device, std::uint64_t seed = 0, std::optional<Date> first = Date{0},
                  bool atLeastOnce = false)
        : platform(TestPlatform::launch(device, {.seed = seed})) {
        if (atLeastOnce) plugin = std::make_shared<IAPReceiptTrackingPlugin>(Delivery::atLeastOnce);
        UIApplication::shared()->setDelegate(std::make_shared<PluggableApplicationDelegate>(
            PluggableApplicationDelegate::Plugins{router, firstDate, purchases, plugin}));
        device.setNow(Date{9 * oneDay});
        if (first) firstDate->dates.onNext(*first);
    }
    void activate() { plugin->didBecomeActive(*UIApplication::shared()); }
    void resign() { plugin->willResignActive(*UIApplication::shared()); }
    // What a pass over the records sends.
    Lines send(std::vector<ReceiptInfo> records) {
        purchases->categories.onNext({{"", pro(), std::move(records)}});
        return idle();
    }
    Lines idle() {
        platform->runUntilIdle();
        return router->take();
    }

    std::unique_ptr<TestPlatform> platform;
    std::shared_ptr<RecordingRouter> router = std::make_shared<RecordingRouter>();
    std::shared_ptr<FakeFirstDate> firstDate = std::make_shared<FakeFirstDate>();
    std::shared_ptr<FakePurchases> purchases = std::make_shared<FakePurchases>();
    std::shared_ptr<IAPReceiptTrackingPlugin> plugin = std::make_shared<IAPReceiptTrackingPlugin>();
};

class IAPReceiptTracking : public testing::Test {
protected:
    static DeviceKeychain::Entry marker(const std::string& account) {
        return {keychainService, account, {{account, true}}};
    }
    void mark(const std::string& account, const KeychainDictionary& entry) {
        device_.keychain().save(entry, account, keychainService);
    }

    TestDevice device_;
    Host host_{device_};
};

const auto aTrial = asTrial(bought(1, 1, 1));

TEST_F(IAPReceiptTracking, ReportsWhatWasBoughtSinceTheFirstDateOnceThatIsKnown) {
    Host host(device_, 0, std::nullopt);
    host.activate();
    EXPECT_THAT(host.send({aTrial, bought(2, 1, 4), bought(3, 1, 4)}), IsEmpty());
    host.firstDate->dates.onNext(Date{4 * oneDay});
    EXPECT_THAT(host.idle(),
                ElementsAre("renew_pro currency=EUR value=4.99", "renew_pro currency=EUR value=4.99"));
    host.firstDate->dates.onNext(Date{0});
    EXPECT_THAT(host.idle(), Contains("trial_subscribe_pro currency=EUR value=0"));
}

TEST_F(IAPReceiptTracking, IsSilentAboutARecordWithAMarkerOrWhoseMarkerIsRefused) {
    mark("4", {{"whatever", false}});
    mark("5", {{"5", true}, {"more", "text"}}); // counts as absent, yet cannot be added
    Lines omitted;
    HostCore::setOmitBlock([&](const auto& error) { omitted.push_back(localizedDescription(error)); });
    device_.keychain().denyNextSave(KeychainStatus::duplicateItem); // another pass was quicker
    device_.keychain().denyNextSave(KeychainStatus::diskFull);
    bool wasMarked = false;
    host_.router->onLine = [&](const std::string&) {
        wasMarked = device_.keychain().load("3", keychainService).has_value();
    };
    host_.activate();
    EXPECT_THAT(host_.send({aTrial, bought(2, 1, 2), bought(3, 1, 3), bought(4, 1, 4), bought(5, 1, 5),
                            bought(6, 1, 6, 1)}),
                ElementsAre("renew_pro currency=EUR value=4.99"));
    EXPECT_TRUE(wasMarked);
    EXPECT_TRUE(device_.keychain().load("6", keychainService)); // silent, as it has expired
    EXPECT_THAT(omitted,
                ElementsAre(HasSubstr("already exists"), "The disk is full.", HasSubstr("already exists")));
    EXPECT_EQ(host_.send({aTrial}).size(), 3u); // the next pass tries again
}

TEST_F(IAPReceiptTracking, LeavesOutWhatASourceOfTheHostPublishesWithoutAProduct) {
    host_.activate();
    host_.plugin->trackValidatedPurchase("pro", std::nullopt);
    host_.purchases->categories.onNext({{"pro", nullptr, {aTrial}}});
    EXPECT_THAT(host_.idle(), IsEmpty());
    EXPECT_EQ(host_.send({aTrial}).size(), 4u) << "nor is it marked";
}

TEST_F(IAPReceiptTracking, BeginsAtAnActivationUnlessInDebugModeWithoutADryRun) {
    for (const auto& [debug, dryRun] : {std::pair(false, true), {true, true}, {true, false}}) {
        Corvantile::setDebug(debug);
        Corvantile::setDryRun(dryRun);
        host_.activate();
        EXPECT_EQ(host_.send({aTrial}).empty(), debug && !dryRun);
        host_.resign();
    }
    host_.plugin->trackValidatedPurchase("pro", std::nullopt);
    EXPECT_THAT(host_.idle(), ElementsAre("ostrel_in_app_purchase"));
    EXPECT_THAT(
        host_.platform->console().lines(),
        testing::IsSupersetOf({HasSubstr(":122 (trackReceipts()) -> subscribed"),
                               HasSubstr(":164 (trackReceipts()) -> subscribed"),
                               HasSubstr(":59 (trackValidatedPurchase(productID:_:)) -> subscribed")}));
}

TEST_F(IAPReceiptTracking, SendsAValidatedPurchaseOnceForTheFirstPurchaseOfTheProduct) {
    const auto other = std::make_shared<SKProduct>("pro.2", NSDecimalNumber(1), PriceLocale{});
    host_.purchases->categories.onNext({{"pro", other, {bought(8, 8, 2)}},
                                        {"x", pro(), {bought(7, 1, 3)}},
                                        {"y", pro(), {bought(9, 9, 6), bought(5, 5, 4), bought(4, 3, 2)}}});
    host_.plugin->trackValidatedPurchase("pro", EventParameters{{"a", "b"}});
    EXPECT_THAT(host_.idle(), ElementsAre("ostrel_in_app_purchase a=b"));
    EXPECT_THAT(device_.keychain().entries(), ElementsAre(marker("validated_5")));

    host_.plugin->trackValidatedPurchase("pro", std::nullopt);
    EXPECT_THAT(host_.idle(), IsEmpty());
}

TEST_F(IAPReceiptTracking, ReportsAGracePeriodAtOnceAndMarksItAfterwardsEvenInADryRun) {
    const auto renewal = [](std::string product, double untilDay) {
        return RenewalInfo{.productID = std::move(product),
                           .gracePeriodExpiresDate = Date{untilDay * oneDay}};
    };
    host_.router->onLine = [&](const std::string&) {
        EXPECT_FALSE(NSUserDefaults::standardUserDefaults()->boolForKey("enter_grace_period_pro"));
    };
    Corvantile::setDryRun(true);
    host_.activate();
    host_.resign(); // the renewals are listened to all the same
    host_.purchases->renewalInfos.onNext({renewal("now", 9), renewal("pro", 12), renewal("pro", 13)});
    EXPECT_THAT(host_.router->take(), ElementsAre("enter_grace_period value=pro")); // on this thread
    EXPECT_TRUE(NSUserDefaults::standardUserDefaults()->boolForKey("enter_grace_period_pro"));
}

TEST_F(IAPReceiptTracking, ReplacesPassesWithoutEndingThemAndEndsTheLastOnResigning) {
    Corvantile::setDryRun(true); // so that every pass reports again, save what is marked
    mark("2", {{"2", true}});
    host_.activate();
    host_.activate();
    host_.plugin->trackValidatedPurchase("pro", std::nullopt);
    EXPECT_EQ(host_.send({aTrial, bought(2, 1, 2)}).size(), 7u);
    host_.resign();
    EXPECT_EQ(host_.send({aTrial, bought(2, 1, 2)}).size(), 4u);
    EXPECT_THAT(device_.keychain().entries(), ElementsAre(marker("2")));
    host_.purchases->categories.onError(std::make_exception_ptr(NSError("test", 1)));
    EXPECT_THAT(host_.idle(), IsEmpty());
    EXPECT_THAT(host_.platform->console().lines(), IsEmpty()); // nor is the failure told
}

// A process that ends while it sends the events of the record: it writes nothing more.
void endWhileSending(TestDevice& device, const ReceiptInfo& record) {
    Host host(device, 0, Date{0}, true);
    device.keychain().denyNextUpdate();
    host.activate();
    EXPECT_FALSE(host.send({record}).empty());
}

TEST_F(IAPReceiptTracking, SendsAgainAsDecidedWhatTheEndOfAProcessCutsOffIfAskedFor) {
    const std::pair<ReceiptInfo, Lines> cases[] = {
        {aTrial,
         {"trial_subscribe_pro currency=EUR value=0", "subscription 1 0 EUR DE 2001-01-02",
          "total_subscription currency=EUR value=0"}},
        {bought(1, 1, 1, 0),
         {"subscribe_pro currency=EUR value=4.99 + 4.99 EUR", "total_subscription currency=EUR value=4.99"}},
        {bought(1, 0, 4), {"renew_pro currency=EUR value=4.99"}},
    };
    for (const auto& [record, lines] : cases) {
        SCOPED_TRACE(lines[0]);
        TestDevice device;
        endWhileSending(device, record);
        Host dry(device, 0, Date{0}, true);
        Corvantile::setDryRun(true);
        dry.activate();
        EXPECT_THAT(dry.idle(), IsEmpty());

        Host next(device, 0, Date{0}, true);
        device.setNow(Date{99 * oneDay}); // the record has expired, and left the receipt
        next.activate();
        EXPECT_EQ(next.router->take(), lines);
        next.activate();
        EXPECT_THAT(next.send({record}), IsEmpty());
        EXPECT_THAT(device.keychain().entries(), ElementsAre(marker("1")));
        EXPECT_THAT(device.defaults().values(), IsEmpty());
    }
}

TEST_F(IAPReceiptTracking, SavesNoEventsForARecordThatSendsNoneNorInADryRun) {
    Host host(device_, 0, Date{0}, true);
    host.activate();
    EXPECT_THAT(host.send({bought(2, 1, 1, 1)}), IsEmpty());
    EXPECT_THAT(device_.keychain().entries(), ElementsAre(marker("2")));
    Corvantile::setDryRun(true);
    EXPECT_EQ(host.send({aTrial}).size(), 3u);
    EXPECT_THAT(device_.keychain().entries(), ElementsAre(marker("2")));
    EXPECT_THAT(device_.defaults().values(), IsEmpty());
}

TEST_F(IAPReceiptTracking, SendsAValidatedPurchaseAgainIfAProcessEndedOverItAndTheHostReportsIt) {
    {
        Host ended(device_, 0, Date{0}, true);
        device_.keychain().denyNextUpdate();
        ended.plugin->trackValidatedPurchase("pro", std::nullopt);
        EXPECT_EQ(ended.send({aTrial}).size(), 1u);
    }
    Host next(device_, 0, Date{0}, true);
    next.activate();
    EXPECT_THAT(next.idle(), IsEmpty());
    const auto validate = [&] {
        next.plugin->trackValidatedPurchase("pro", EventParameters{{"shown", 1}});
        return next.send({aTrial});
    };
    next.resign();
    EXPECT_THAT(validate(), ElementsAre("ostrel_in_app_purchase shown=1"));
    EXPECT_THAT(validate(), IsEmpty());
    EXPECT_THAT(device_.keychain().entries(), ElementsAre(marker("validated_1")));
    EXPECT_THAT(device_.defaults().values(), IsEmpty());
}

TEST_F(IAPReceiptTracking, LeavesPendingEventsThatItCannotReadToALaterVersion) {
    endWhileSending(device_, aTrial);
    const auto entry = device_.keychain().entries().at(0).dictionary;
    auto text = *entry.at("events").as<std::string>();
    text.replace(text.find(R"("version":1)"), 11, R"("version":2)");
    device_.keychain().update({{"1", true}, {"events", text}}, "1", keychainService);
    Host host(device_, 0, Date{0}, true);
    Lines omitted;
    HostCore::setOmitBlock([&](const auto& error) { omitted.push_back(localizedDescription(error)); });
    host.activate();
    EXPECT_THAT(host.send({aTrial}), IsEmpty());
    EXPECT_THAT(omitted, ElementsAre("The pending events of transaction 1 cannot be read."));
    device_.keychain().update(entry, "1", keychainService);
    host.activate();
    EXPECT_EQ(host.idle().size(), 3u);
}

using IAPReceiptTrackingDeathTest = IAPReceiptTracking;

TEST_F(IAPReceiptTrackingDeathTest, EndsTheProcessOverTheFirstServiceThatIsMissing) {
    const std::pair<PluggableApplicationDelegate::Plugins, const char*> cases[] = {
        {{}, "AnalyticPluggable"},
        {{host_.router}, "FirstDatePluggable"},
        {{host_.router, host_.firstDate}, "IAPReceiptPluggable"}};
    for (const auto& [plugins, missing] : cases) {
        Corvantile::setAppDelegate(std::make_shared<PluggableApplicationDelegate>(plugins));
        EXPECT_DEATH(host_.activate(),
                     HasSubstr("Fatal error: This service require " + std::string(missing) + ".\n"));
    }
}

TEST(IAPReceiptTrackingPasses, SendEachTransactionOnceInWhateverOrderTheirQueuesRun) {
    const auto play = [](std::uint64_t seed) {
        TestDevice device;
        Host host(device, seed + 1);
        Host second(device, seed + 1); // another process on the same device
        Lines lines;
        for (auto* const each : {&host, &second}) {
            each->platform->makeCurrent();
            each->activate();
            each->purchases->categories.onNext({{"", pro(), {bought(2, 1, 4), aTrial}}});
            each->activate();
            each->purchases->categories.onNext({{"", pro(), {bought(3, 1, 5), bought(2, 1, 4), aTrial}}});
        }
        for (auto* const each : {&host, &second}) {
            each->platform->makeCurrent();
            for (auto& line : each->idle()) lines.push_back(std::move(line));
        }
        EXPECT_THAT(lines, testing::UnorderedElementsAre("trial_subscribe_pro currency=EUR value=0",
                                                         "subscription 1 0 EUR DE 2001-01-02",
                                                         "total_subscription currency=EUR value=0",
                                                         "trial_conversion_pro currency=EUR value=4.99",
                                                         "subscription 2 4.99 EUR DE 2001-01-05",
                                                         "renew_pro currency=EUR value=4.99"));
    };
    forEachSeed(200, play, testing::Test::HasFailure);
}

} // namespace corvantile::IAPReceiptTrackingPluginTest
