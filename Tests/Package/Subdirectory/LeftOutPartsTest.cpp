#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlatform/Adjust/Adjust.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <mutex>

namespace corvantile {
namespace {

template <class Platform>
concept ShowsLeftOutParts = requires(Platform& platform) {
    platform.httpRoutes();
}
|| requires(Platform& platform) { platform.store(); }
|| requires(Platform& platform) { platform.adjust(); };
static_assert(!ShowsLeftOutParts<DesktopPlatform>, "a host would crash where it should not compile");

class Lines final : public Console {
public:
    void print(std::string_view text) override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(text);
    }
    [[nodiscard]] std::vector<std::string> all() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

struct LeftOutParts : testing::Test {
    TemporaryFolder folder;
    std::shared_ptr<Lines> lines = std::make_shared<Lines>();
    DesktopPlatform platform{DesktopOptions{.stateFolder = folder.path(), .console = lines}};
    std::optional<std::string> failure; // of the request that was answered

    auto noteFailure() {
        return [this](const auto&, const std::exception_ptr& error) { failure = describe(error); };
    }
    bool waitForFailure() {
        return platform.runMainLoopUntil([this] { return failure.has_value(); }, std::chrono::seconds(10));
    }
};

struct FailedPayments final : SKPaymentTransactionObserver {
    explicit FailedPayments(SKPaymentQueue& queue) : registration(queue.addTransactionObserver(*this)) {}

    void updatedTransactions(SKPaymentQueue&, const Transactions& transactions) override {
        for (const auto& transaction : transactions) updated.push_back(transaction);
    }
    void removedTransactions(SKPaymentQueue&, const Transactions& transactions) override {
        for (const auto& transaction : transactions) removed.push_back(transaction);
    }
    void restoreCompletedTransactionsFailedWithError(SKPaymentQueue&,
                                                     const std::exception_ptr& error) override {
        restoreFailure = localizedDescription(error);
    }

    Transactions updated, removed;
    std::string restoreFailure;
    std::unique_ptr<PaymentObserverRegistration> registration;
};

} // namespace

TEST_F(LeftOutParts, ARequestFailsLaterAsWithoutANetworkAndSaysWhy) {
    const auto request =
        HTTPClient::shared()->send({.url = "https://example.com"}, DispatchQueue::main(), noteFailure());

    EXPECT_EQ(failure, std::nullopt);
    ASSERT_TRUE(waitForFailure());
    EXPECT_THAT(*failure, HasSubstr("NSURLErrorDomain Code=-1009"));
    EXPECT_THAT(*failure, HasSubstr("CORVANTILE_DESKTOP_HTTP off"));
}

TEST_F(LeftOutParts, ARequestThatIsLetGoIsNotAnswered) {
    auto request =
        HTTPClient::shared()->send({.url = "https://example.com"}, DispatchQueue::main(), noteFailure());
    request.reset();
    bool isNextItemDone = false;
    DispatchQueue::main()->async([&] { isNextItemDone = true; });

    ASSERT_TRUE(platform.runMainLoopUntil([&] { return isNextItemDone; }, std::chrono::seconds(10)));
    EXPECT_EQ(failure, std::nullopt);
}

TEST_F(LeftOutParts, TheStoreFailsWhateverItIsAskedFor) {
    auto request = StoreRequests::shared()->products({"pro"}, DispatchQueue::main(), noteFailure());
    ASSERT_TRUE(waitForFailure());
    EXPECT_THAT(*failure, HasSubstr("CORVANTILE_DESKTOP_STORE off"));

    failure.reset();
    request = StoreRequests::shared()->receipt(DispatchQueue::main(), noteFailure());
    ASSERT_TRUE(waitForFailure());
    EXPECT_THAT(*failure, HasSubstr("CORVANTILE_DESKTOP_STORE off"));
}

TEST_F(LeftOutParts, APaymentFailsAndItsTransactionWaitsUntilItIsFinished) {
    const auto queue = SKPaymentQueue::defaultQueue();
    FailedPayments seen(*queue);
    queue->addPayment(std::make_shared<SKPayment>("pro"));
    queue->restoreCompletedTransactions();

    ASSERT_TRUE(
        platform.runMainLoopUntil([&] { return !seen.restoreFailure.empty(); }, std::chrono::seconds(10)));
    EXPECT_THAT(seen.restoreFailure, HasSubstr("CORVANTILE_DESKTOP_STORE off"));
    ASSERT_EQ(seen.updated.size(), 1U);
    const auto& failed = seen.updated.front();
    EXPECT_EQ(failed->transactionState(), SKPaymentTransactionState::failed);
    EXPECT_THAT(localizedDescription(failed->error()), HasSubstr("CORVANTILE_DESKTOP_STORE off"));
    EXPECT_THAT(queue->transactions(), ElementsAre(failed));

    queue->finishTransaction(*failed);
    queue->finishTransaction(*failed);
    EXPECT_THAT(queue->transactions(), IsEmpty());
    ASSERT_TRUE(platform.runMainLoopUntil([&] { return !seen.removed.empty(); }, std::chrono::seconds(10)));
    EXPECT_THAT(seen.removed, ElementsAre(failed));
}

TEST_F(LeftOutParts, TheAttributionSDKReportsOnceThatItDeliversNothing) {
    const auto& adjust = platform.ports().adjust;
    adjust->setPushToken({1, 2});
    EXPECT_THAT(lines->all(), IsEmpty());

    adjust->launch(adjust->makeConfig("abcdefghijkl", "sandbox"));
    adjust->send(ADJEvent("a1b2c3"));
    adjust->send(ADJEvent("a1b2c3"));

    EXPECT_THAT(lines->all(), ElementsAre(HasSubstr("delivers nothing")));
}

} // namespace corvantile
