#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Store/SKPayment.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/TestPlatform.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"

#include <chrono>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cv = corvantile;

// What an app's own test of its purchases looks like: a phone in memory, a store that lives, and time that
// passes when the test says so. It has no threads and never waits; eight days take a few milliseconds.
namespace {

constexpr const char* catalogue = R"({"version": {"major": 4, "minor": 0}, "subscriptionGroups": [
    {"id": "1", "name": "Pro", "subscriptions": [
        {"productID": "pro", "type": "RecurringSubscription", "displayPrice": "4.99",
         "recurringSubscriptionPeriod": "P1M", "subscriptionGroupID": "1",
         "introductoryOffer": {"paymentMode": "free", "subscriptionPeriod": "P1W"}}]}]})";

using Lines = std::vector<std::string>;

// Stands where the app's back end would be, and notes what it would be told.
class BackEnd final : public cv::AnalyticComponent {
public:
    explicit BackEnd(Lines& lines) : lines_(lines) {}
    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override { return ignored_; }
    void ignore(std::initializer_list<std::string_view>) override {}
    void track(const cv::AnalyticEvent& event) override { lines_.push_back(event.name); }
    void track(const cv::AnalyticEvent& event, const cv::NSDecimalNumber& with,
               const std::string& currency) override {
        lines_.push_back(event.name + " of " + with.description() + " " + currency);
    }
    void trackIAPSubs(const cv::NSDecimalNumber& price, const std::string& currency, const std::string&,
                      const std::optional<cv::Date>&, const std::optional<std::string>&) override {
        lines_.push_back("a subscription for " + price.description() + " " + currency);
    }

private:
    Lines& lines_;
    std::vector<std::string> ignored_;
};

// The app launches, and comes to the front.
void launchApp(Lines& told) {
    const auto analytics = std::make_shared<cv::AnalyticPlugin>();
    const auto records =
        std::make_shared<cv::IAPReceiptPlugin>(std::vector<cv::IAPReceiptPlugin::Product>{{"pro"}});
    const auto app = cv::UIApplication::shared();
    app->setDelegate(std::make_shared<cv::PluggableApplicationDelegate>(
        cv::PluggableApplicationDelegate::Plugins{analytics, std::make_shared<cv::FirstDatePlugin>(), records,
                                                  std::make_shared<cv::IAPReceiptTrackingPlugin>()}));
    analytics->registerComponents({std::make_shared<BackEnd>(told)});
    app->delegate()->didFinishLaunchingWithOptions(*app, {});
    app->delegate()->didBecomeActive(*app);
}

bool expect(const char* when, const Lines& told, const Lines& expected) {
    std::cout << when << ":\n";
    for (const auto& line : told) std::cout << "    " << line << '\n';
    if (told == expected) return true;
    std::cout << "  That is not what was expected.\n";
    return false;
}

} // namespace

int main() {
    using namespace std::chrono_literals;
    Lines told;
    cv::TestDevice phone;
    cv::TestOptions options;
    options.localStore = cv::TestStoreOptions{.catalogue = catalogue};
    auto process = cv::TestPlatform::launch(phone, options);

    launchApp(told);
    cv::SKPaymentQueue::defaultQueue()->addPayment(std::make_shared<cv::SKPayment>("pro"));
    process->runUntilIdle();
    Lines expected{"trial_subscribe_pro", "a subscription for 0 USD", "total_subscription"};
    bool passed = expect("A trial begins", told, expected);

    process = cv::TestPlatform::relaunch(std::move(process));
    launchApp(told);
    process->runUntilIdle();
    passed &= expect("The next launch reports nothing twice", told, expected);

    process->advance(24h * 8);
    expected.insert(expected.end(), {"trial_conversion_pro", "a subscription for 4.99 USD"});
    passed &= expect("The trial is paid for", told, expected);
    return passed ? 0 : 1;
}
