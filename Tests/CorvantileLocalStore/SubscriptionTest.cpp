#include "Tests/CorvantileLocalStore/StoreFixture.hpp"

#include <limits>

namespace corvantile::SubscriptionTest {

std::string summary(LocalStore& store) {
    static constexpr const char* states[] = {"active", "grace", "retry", "expired", "revoked"};
    const auto all = store.subscriptions();
    if (all.empty()) return "nothing";
    const auto& subscription = all.front();
    std::string text = states[static_cast<int>(subscription.status)];
    text += " " + dayOf(subscription.expirationDate);
    if (subscription.gracePeriodEnd) text += " until " + dayOf(*subscription.gracePeriodEnd);
    if (subscription.status == SubscriptionStatus::active && !subscription.renews) text += " ends";
    if (const auto intent = subscription.expirationIntent)
        text += " for " + std::to_string(static_cast<int>(*intent));
    return text + ", " + std::to_string(store.purchases().size());
}

TEST(Subscription, LivesThroughAYearAsItsCustomerAndTheBankDecide) {
    StoreFixture shop(sampleCatalogue());
    const auto buy = [&] { EXPECT_EQ(shop.pay(monthly).state, SKPaymentTransactionState::purchased); };
    const auto refused = [&] { EXPECT_EQ(shop.pay(monthly).state, SKPaymentTransactionState::failed); };
    const auto renews = [&](bool does) { return [&shop, does] { shop.store->setRenews(monthly, does); }; };
    const auto billing = [&](bool fails) {
        return [&shop, fails] { shop.store->setBillingFails(monthly, fails); };
    };
    const auto wait = [] {};
    const struct {
        const char* day;
        std::function<void()> act;
        const char* expected; // state, end of the period, purchases so far
    } steps[] = {
        {"2024-01-31", wait, "nothing"},
        {"2024-01-31", buy, "active 2024-02-07, 1"}, // the trial
        {"2024-01-31", refused, "active 2024-02-07, 1"},
        {"2024-02-07", wait, "active 2024-03-07, 2"},
        {"2024-05-10", renews(false), "active 2024-06-07 ends, 5"},
        {"2024-05-11", renews(true), "active 2024-06-07, 5"},
        {"2024-05-12", renews(false), "active 2024-06-07 ends, 5"},
        {"2024-06-07", wait, "expired 2024-06-07 for 1, 5"},
        {"2024-06-20", buy, "active 2024-07-20, 6"}, // without a second trial
        {"2024-06-21", billing(true), "active 2024-07-20, 6"},
        {"2024-07-20", wait, "grace 2024-07-20 until 2024-08-05 for 2, 6"},
        {"2024-07-25", billing(false), "active 2024-08-20, 7"}, // as if nothing had been
        {"2024-07-26", billing(true), "active 2024-08-20, 7"},
        {"2024-09-04", wait, "grace 2024-08-20 until 2024-09-05 for 2, 7"},
        {"2024-09-05", wait, "retry 2024-08-20 for 2, 7"},
        {"2024-09-10", billing(false), "active 2024-10-10, 8"}, // the calendar begins anew
        {"2024-09-11", billing(true), "active 2024-10-10, 8"},
        {"2024-12-08", wait, "retry 2024-10-10 for 2, 8"},
        {"2024-12-09", wait, "expired 2024-10-10 for 2, 8"},
        {"2024-12-20", refused, "expired 2024-10-10 for 2, 8"},
        {"2024-12-20", billing(false), "expired 2024-10-10 for 2, 8"},
        {"2024-12-20", buy, "active 2025-01-20, 9"},
        {"2024-12-21", billing(true), "active 2025-01-20, 9"},
        {"2025-01-21", renews(false), "expired 2025-01-20 for 1, 9"}, // at once, for its period is over
        {"2025-01-22", billing(false), "expired 2025-01-20 for 1, 9"},
        {"2025-01-22", buy, "active 2025-02-22, 10"},
        {"2025-02-01", [&] { shop.store->refund(monthly); }, "revoked 2025-02-22 for 1, 10"},
        {"2025-12-01", wait, "revoked 2025-02-22 for 1, 10"},
    };
    for (const auto& [day, act, expected] : steps) {
        SCOPED_TRACE(std::string(day) + " " + expected);
        shop.goTo(day);
        act();
        EXPECT_EQ(summary(*shop.store), expected);
        shop.launch(); // it is all written down
        EXPECT_EQ(summary(*shop.store), expected);
    }
    const auto purchases = shop.store->purchases();
    for (const auto& purchase : purchases) {
        EXPECT_EQ(purchase.originalIdentifier, purchases.front().identifier);
        EXPECT_EQ(purchase.isTrial, &purchase == &purchases.front());
    }
}

TEST(Subscription, BeginsWithItsIntroductoryOfferOnce) {
    const struct {
        const char* version;
        int days;
        const char* expected; // each period: its end, price and kind
    } cases[] = {
        {"2.0", 125,
         "2024-02-29 0.5 intro, 2024-03-31 0.5 intro, 2024-04-30 0.5 intro, 2024-05-30 3, 2024-06-30 3"},
        {"3.0", 400, "2024-02-14 0 trial, 2024-08-14 480, 2025-02-14 480, 2025-08-14 480"},
        {"4.0", 400, "2024-04-30 9.99 intro, 2025-04-30 19.99"},
        {"5.0", 28, "2024-02-03 0 trial, 2024-02-10 7.49, 2024-02-17 7.49, 2024-02-24 7.49, 2024-03-02 7.49"},
    };
    for (const auto& [version, days, expected] : cases) {
        StoreFixture shop(catalogueOfVersion(version));
        shop.pay("plan");
        shop.store->advance(std::chrono::hours(24 * days));
        std::string periods;
        for (const auto& purchase : shop.store->purchases())
            periods += (periods.empty() ? "" : ", ") + dayOf(*purchase.expirationDate) + " " +
                       purchase.price.description() + (purchase.isTrial ? " trial" : "") +
                       (purchase.isIntroductory ? " intro" : "");
        EXPECT_EQ(periods, expected) << version;
    }
}

TEST(StoreClock, FollowsTheDeviceAtItsRateAndNeverGoesBack) {
    StoreFixture shop(catalogueOfVersion("5.0"));
    const auto start = shop.clock->date;
    const auto expectAt = [&](int deviceTime, int storeTime) {
        shop.clock->date = start + std::chrono::seconds(deviceTime);
        EXPECT_EQ((shop.store->now() - start).count(), storeTime);
    };
    expectAt(5, 5);
    shop.store->setClockRate(100);
    expectAt(7, 205);
    expectAt(2, 205); // somebody set it back
    expectAt(3, 305);
    shop.launch();
    expectAt(4, 405);
    shop.store->setClockRate(0);
    expectAt(100, 405);
    EXPECT_FALSE(shop.store->catchUp());
    shop.store->setClockRate(1000);
    shop.pay("plan"); // three days free
    EXPECT_EQ(shop.store->catchUp()->delay, std::chrono::milliseconds(259200));
    EXPECT_THROW(shop.store->advance(std::chrono::seconds(-1)), NSError);
    for (const double rate : {-1.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_THROW(shop.store->setClockRate(rate), NSError);
        EXPECT_THROW(LocalStore({.clock = shop.clock, .storage = shop.storage, .clockRate = rate}), NSError);
    }
}

TEST(StoreClock, RenewsAfterAJumpOfExactlyThePeriodWhereverItBegan) {
    for (const int microseconds : {0, 456, 1777, 123000, 999999})
        for (const bool isFromEarlierVersion : {false, true}) {
            StoreFixture shop(catalogueOfVersion("5.0"));
            shop.clock->date = shop.clock->date + std::chrono::microseconds(microseconds);
            if (isFromEarlierVersion) { // which wrote the time down as it was
                const auto time = std::to_string(shop.clock->date.secondsSinceReference);
                StoreStorage::Changes rows;
                rows["clock"] = R"({"device": )" + time + R"(, "store": )" + time +
                                R"(, "rate": 0, "seen": )" + time + "}";
                ASSERT_TRUE(shop.storage->commit(rows, {}));
            }
            shop.store->setClockRate(0);
            shop.pay("plan"); // three days free, then by the week
            shop.store->advance(std::chrono::hours(24 * 3));
            shop.store->advance(std::chrono::hours(24 * 7));
            EXPECT_EQ(shop.store->purchases().size(), 3u) << microseconds << isFromEarlierVersion;
        }
}

} // namespace corvantile::SubscriptionTest
