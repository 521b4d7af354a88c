#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "Tests/CorvantileLocalStore/Days.hpp"
#include "Tests/EndToEnd/StoryProcess.hpp"

// From the store to the attribution SDK, over a year.
namespace corvantile::YearOfPurchasesTest {

using namespace std::chrono_literals;

// Three minutes after the time of day at which the store began, when what was due on that day has happened.
Date afterwards(const std::string& day) { return onDay(day, 3h + 7min + 5s); }

template <class Story>
class YearOfPurchases : public testing::Test {
protected:
    void TearDown() override { process.terminate(); }

    static void buy(const std::string& product) {
        SKPaymentQueue::defaultQueue()->addPayment(std::make_shared<SKPayment>(product));
    }
    static void open() {
        const auto application = UIApplication::shared();
        application->delegate()->willResignActive(*application);
        application->delegate()->didBecomeActive(*application);
    }
    void launch() {
        process.launch();
        launchStoryApp(backEnd);
    }

    Story process;
    const std::shared_ptr<RecordingSink> backEnd = std::make_shared<RecordingSink>();
};

TYPED_TEST_SUITE(YearOfPurchases, Stories);

TYPED_TEST(YearOfPurchases, SendsWhatTheRulesSayAndNothingTwice) {
    auto& story = this->process;
    const std::function<void()> wait = [] {};
    const auto buy = [](const char* product) -> std::function<void()> {
        return [product] { TestFixture::buy(product); };
    };
    const auto billing = [&](bool fails) -> std::function<void()> {
        return [&story, fails] { story.store().setBillingFails("pro", fails); };
    };
    const auto refundThemes = [&story] {
        story.store().refund("themes");
        TestFixture::open();
    };
    const struct {
        const char* date;
        std::function<void()> act;
        Lines expected;
    } steps[] = {
        // A trial is a first purchase for nothing, named by its category.
        {"2024-01-02",
         buy("pro"),
         {"trial_subscribe_plan currency=USD value=0", "subscription 200000000000001 0 USD US 2024-01-02",
          "total_subscription currency=USD value=0"}},
        // A finished consumable is in no receipt, so the analytics never see it: the host does.
        {"2024-01-05", buy("gems"), {"consumes gems"}},
        // The second record after a trial.
        {"2024-01-10",
         wait,
         {"trial_conversion_plan currency=USD value=4.99",
          "subscription 200000000000004 4.99 USD US 2024-01-09"}},
        // The host asks for this one; its parameters are the host's.
        {"2024-01-12",
         [] {
             Corvantile::queryAppDelegate<IAPReceiptTrackingPluggable>()->trackValidatedPurchase(
                 "pro", EventParameters{{"desk", "seven"}});
         },
         {"ostrel_in_app_purchase desk=seven"}},
        // A first purchase that is paid.
        {"2024-01-20",
         buy("cloud"),
         {"subscribe_cloud currency=USD value=29.99", "subscription 200000000000006 29.99 USD US 2024-01-20",
          "total_subscription currency=USD value=29.99"}},
        // A renewal is neither a subscription report nor part of the total.
        {"2024-02-10", wait, {"renew_plan currency=USD value=4.99"}},
        // What does not expire carries its price as revenue and is no subscription.
        {"2024-02-20",
         buy("themes"),
         {"subscribe_themes currency=USD value=9.99 + 9.99 USD",
          "total_subscription currency=USD value=9.99"}},
        // No event tells of a refund, and the marker stays.
        {"2024-02-25", refundThemes, {}},
        {"2024-03-01", [&story] { story.store().setRenews("pro", false); }, {}},
        // It ends as its customer wished: silence.
        {"2024-03-10", TestFixture::open, {}},
        // Bought again after a lapse it is neither first (its original is the trial's) nor second.
        {"2024-05-10", buy("pro"), {"renew_plan currency=USD value=4.99"}},
        {"2024-06-01", billing(true), {}},
        // No transaction tells of a grace period, so it shows when the app reads the receipt.
        {"2024-06-11", TestFixture::open, {"enter_grace_period value=pro"}},
        // Paid in the grace period: a period like any other.
        {"2024-06-15", billing(false), {"renew_plan currency=USD value=4.99"}},
        {"2024-07-01", billing(true), {}},
        // Only the first grace period of an install is reported.
        {"2024-07-11", TestFixture::open, {}},
        {"2024-08-20", billing(false), {"renew_plan currency=USD value=4.99"}},
        {"2024-09-10", [&story] { story.terminate(); }, {}},
        // Renewed on September 20 and October 20 while the app did not run: the first of these is over.
        {"2024-11-01", [this] { this->launch(); }, {"renew_plan currency=USD value=4.99"}},
        {"2024-11-21", wait, {"renew_plan currency=USD value=4.99"}},
        {"2025-01-02", wait, {"renew_plan currency=USD value=4.99"}},
    };
    this->launch();
    Lines expected;
    for (const auto& [date, act, lines] : steps) {
        SCOPED_TRACE(date);
        story.goTo(afterwards(date));
        act();
        expected.insert(expected.end(), lines.begin(), lines.end());
        story.settle([&] { return this->backEnd->lines().size() >= expected.size(); });
        ASSERT_EQ(this->backEnd->lines(), expected);
    }

    // The SDK knows the events that have a token, and every subscription report.
    const Lines sent{"trial1", "200000000000001", "200000000000004", "200000000000006", "renew1",
                     "theme1", "renew1",          "grace1",          "renew1",          "renew1",
                     "renew1", "renew1",          "renew1"};
    EXPECT_EQ(story.sdk(), sent);
}

// Whether a consumable's purchase is reported is decided by who hears of it first, also before the products
// are known and where batches follow each other at once.
TYPED_TEST(YearOfPurchases, ReportConsumablesExactlyIfTheRecordsHearOfThemFirst) {
    for (const auto first : {FirstToHear::records, FirstToHear::consumables}) {
        auto& story = this->process;
        const auto countOf = [&](const std::string& line) {
            const auto lines = this->backEnd->lines();
            return std::count(lines.begin(), lines.end(), line);
        };
        const auto reported = countOf("total_subscription currency=USD value=0.99");
        const auto consumed = countOf("consumes gems");
        story.launch();
        for (int bought = 0; bought < 5; ++bought) story.store().buyElsewhere("gems");
        launchStoryApp(this->backEnd, first);
        for (int bought = 0; bought < 5; ++bought) TestFixture::buy("gems");
        const int expected = first == FirstToHear::records ? 10 : 0;
        story.settle([&] {
            return countOf("consumes gems") == consumed + 10 &&
                   countOf("total_subscription currency=USD value=0.99") >= reported + expected;
        });
        TestFixture::buy("themes"); // is reported after everything that came before
        story.settle([&] { return countOf("total_subscription currency=USD value=9.99") == 1; });
        EXPECT_EQ(countOf("consumes gems"), consumed + 10);
        EXPECT_EQ(countOf("total_subscription currency=USD value=0.99"), reported + expected);
        story.terminate();
    }
}

} // namespace corvantile::YearOfPurchasesTest
