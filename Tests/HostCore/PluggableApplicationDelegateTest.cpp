#include "HostCore/PluggableApplicationDelegate.hpp"

#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <stdexcept>

namespace corvantile::PluggableApplicationDelegateTest {

using Journal = std::vector<std::string>;
using Error = const std::exception_ptr&;
using Bytes = const std::vector<std::uint8_t>&;

class Greeting {
public:
    virtual ~Greeting() = default;
};

class QuietPlugin final : public virtual PluggableApplicationDelegateService, public Greeting {};

// Notes what reaches it, and says the same to every question.
class NotingPlugin final : public virtual PluggableApplicationDelegateService {
public:
    NotingPlugin(Journal& journal, std::string name, bool answer)
        : journal_(journal), name_(std::move(name)), answer_(answer) {}

    bool didFinishLaunchingWithOptions(UIApplication&, const LaunchOptions& options) override {
        return note("launch", options.size());
    }
    void didBecomeActive(UIApplication&) override { note("active"); }
    void willResignActive(UIApplication&) override { note("resign"); }
    void didEnterBackground(UIApplication&) override { note("background"); }
    void willEnterForeground(UIApplication&) override { note("foreground"); }
    void willTerminate(UIApplication&) override { note("terminate"); }
    void didReceiveMemoryWarning(UIApplication&) override { note("memory"); }
    void didRegisterForRemoteNotificationsWithDeviceToken(UIApplication&, Bytes token) override {
        note("token", token.size());
    }
    void didFailToRegisterForRemoteNotificationsWithError(UIApplication&, Error error) override {
        note("no token", error ? 1 : 0);
    }
    bool openURL(UIApplication&, const std::string& url) override { return note("url", url.size()); }
    void updatedTransactions(SKPaymentQueue&, const Transactions& t) override { note("updated", t.size()); }
    void removedTransactions(SKPaymentQueue&, const Transactions& t) override { note("removed", t.size()); }
    void restoreCompletedTransactionsFinished(SKPaymentQueue&) override { note("restored"); }
    void restoreCompletedTransactionsFailedWithError(SKPaymentQueue&, Error error) override {
        note("not restored", error ? 1 : 0);
    }
    bool shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>&,
                               const std::shared_ptr<SKProduct>&) override {
        return note("payment");
    }

private:
    bool note(const std::string& event, std::size_t size = 0) {
        journal_.push_back(name_ + " " + event + " " + std::to_string(size));
        return answer_;
    }

    Journal& journal_;
    const std::string name_;
    const bool answer_;
};

class PluggableDelegate : public ProcessTest {
protected:
    UIApplication& application() { return *UIApplication::shared(); }
    std::shared_ptr<NotingPlugin> plugin(const std::string& name, bool answer = true) {
        return std::make_shared<NotingPlugin>(journal_, name, answer);
    }

    Journal journal_;
    SKPaymentQueue& queue_ = *SKPaymentQueue::defaultQueue();
};

TEST_F(PluggableDelegate, ForwardsEveryCallbackToEveryPluginInOrder) {
    PluggableApplicationDelegate delegate({plugin("a"), plugin("b")});
    auto& app = application();
    const auto error = std::make_exception_ptr(std::runtime_error("x"));
    const LaunchOptions options{{"key", "value"}};
    const std::vector<std::uint8_t> token(3);
    const SKPaymentTransactionObserver::Transactions two(2);
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"launch 1", [&] { delegate.didFinishLaunchingWithOptions(app, options); }},
        {"active 0", [&] { delegate.didBecomeActive(app); }},
        {"resign 0", [&] { delegate.willResignActive(app); }},
        {"background 0", [&] { delegate.didEnterBackground(app); }},
        {"foreground 0", [&] { delegate.willEnterForeground(app); }},
        {"terminate 0", [&] { delegate.willTerminate(app); }},
        {"memory 0", [&] { delegate.didReceiveMemoryWarning(app); }},
        {"token 3", [&] { delegate.didRegisterForRemoteNotificationsWithDeviceToken(app, token); }},
        {"no token 1", [&] { delegate.didFailToRegisterForRemoteNotificationsWithError(app, error); }},
        {"url 7", [&] { delegate.openURL(app, "app://x"); }},
        {"updated 2", [&] { delegate.updatedTransactions(queue_, two); }},
        {"removed 2", [&] { delegate.removedTransactions(queue_, two); }},
        {"restored 0", [&] { delegate.restoreCompletedTransactionsFinished(queue_); }},
        {"not restored 1", [&] { delegate.restoreCompletedTransactionsFailedWithError(queue_, error); }},
        {"payment 0", [&] { delegate.shouldAddStorePayment(queue_, nullptr, nullptr); }},
    };
    for (const auto& [event, call] : cases) {
        journal_.clear();
        call();
        EXPECT_THAT(journal_, ElementsAre("a " + event, "b " + event));
    }
}

TEST_F(PluggableDelegate, AsksEveryPluginAndJoinsTheAnswers) {
    for (const auto& [first, second] :
         {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
        journal_.clear();
        PluggableApplicationDelegate delegate({plugin("a", first), plugin("b", second)});
        EXPECT_EQ(delegate.didFinishLaunchingWithOptions(application(), {}), first && second);
        EXPECT_EQ(delegate.openURL(application(), "u"), first || second);
        EXPECT_EQ(delegate.shouldAddStorePayment(queue_, nullptr, nullptr), first || second);
        EXPECT_EQ(journal_.size(), 6u);
    }
    PluggableApplicationDelegate quiet({std::make_shared<QuietPlugin>()});
    EXPECT_TRUE(quiet.didFinishLaunchingWithOptions(application(), {}));
    EXPECT_FALSE(quiet.shouldAddStorePayment(queue_, nullptr, nullptr));
}

TEST_F(PluggableDelegate, FindsTheFirstPluginThatConforms) {
    const auto first = std::make_shared<QuietPlugin>();
    const PluggableApplicationDelegate delegate({plugin("a"), first, std::make_shared<QuietPlugin>()});

    EXPECT_EQ(delegate.queryService<Greeting>(), first);
    EXPECT_EQ(delegate.queryService<QuietPlugin>(), first);
    EXPECT_EQ(PluggableApplicationDelegate({plugin("a")}).queryService<Greeting>(), nullptr);
}

using PluggableDelegateDeathTest = PluggableDelegate;

TEST_F(PluggableDelegateDeathTest, RefusesANullPluginAndAMissingPlatform) {
    EXPECT_DEATH(PluggableApplicationDelegate({plugin("a"), nullptr}),
                 "Fatal error: .* null plug-in, at place 2.");
    platform_.reset();
    EXPECT_DEATH(plugin("a"), "Fatal error: No platform is installed");
}

} // namespace corvantile::PluggableApplicationDelegateTest
