#include "HostCore/PluggableApplicationDelegate.hpp"

#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Platform.hpp"

#include <algorithm>
#include <utility>

namespace corvantile {

PluggableApplicationDelegateService::PluggableApplicationDelegateService()
    : livePlugins_(Platform::current().process().livePlugins()) {
    livePlugins_->fetch_add(1);
}

PluggableApplicationDelegateService::~PluggableApplicationDelegateService() { livePlugins_->fetch_sub(1); }

PluggableApplicationDelegate::PluggableApplicationDelegate(Plugins plugins) : plugins_(std::move(plugins)) {
    const auto null = std::find(plugins_.begin(), plugins_.end(), nullptr);
    if (null == plugins_.end()) return;
    fatalError("The application delegate was given a null plug-in, at place " +
               std::to_string(null - plugins_.begin() + 1) + ".");
}

PluggableApplicationDelegate::~PluggableApplicationDelegate() = default;

// Every plug-in is called, also those after one whose result already decides: no short circuit below.

bool PluggableApplicationDelegate::didFinishLaunchingWithOptions(UIApplication& application,
                                                                 const LaunchOptions& options) {
    bool all = true;
    for (const auto& plugin : plugins_) all &= plugin->didFinishLaunchingWithOptions(application, options);
    return all;
}

void PluggableApplicationDelegate::didBecomeActive(UIApplication& application) {
    for (const auto& plugin : plugins_) plugin->didBecomeActive(application);
}

void PluggableApplicationDelegate::willResignActive(UIApplication& application) {
    for (const auto& plugin : plugins_) plugin->willResignActive(application);
}

void PluggableApplicationDelegate::didEnterBackground(UIApplication& application) {
    for (const auto& plugin : plugins_) plugin->didEnterBackground(application);
}

void PluggableApplicationDelegate::willEnterForeground(UIApplication& application) {
    for (const auto& plugin : plugins_) plugin->willEnterForeground(application);
}

void PluggableApplicationDelegate::willTerminate(UIApplication& application) {
    for (const auto& plugin : plugins_) plugin->willTerminate(application);
}

void PluggableApplicationDelegate::didReceiveMemoryWarning(UIApplication& application) {
    for (const auto& plugin : plugins_) plugin->didReceiveMemoryWarning(application);
}

void PluggableApplicationDelegate::didRegisterForRemoteNotificationsWithDeviceToken(
    UIApplication& application, const std::vector<std::uint8_t>& token) {
    for (const auto& plugin : plugins_)
        plugin->didRegisterForRemoteNotificationsWithDeviceToken(application, token);
}

void PluggableApplicationDelegate::didFailToRegisterForRemoteNotificationsWithError(
    UIApplication& application, const std::exception_ptr& error) {
    for (const auto& plugin : plugins_)
        plugin->didFailToRegisterForRemoteNotificationsWithError(application, error);
}

bool PluggableApplicationDelegate::openURL(UIApplication& application, const std::string& url) {
    bool any = false;
    for (const auto& plugin : plugins_) any |= plugin->openURL(application, url);
    return any;
}

void PluggableApplicationDelegate::updatedTransactions(SKPaymentQueue& queue,
                                                       const Transactions& transactions) {
    for (const auto& plugin : plugins_) plugin->updatedTransactions(queue, transactions);
}

void PluggableApplicationDelegate::removedTransactions(SKPaymentQueue& queue,
                                                       const Transactions& transactions) {
    for (const auto& plugin : plugins_) plugin->removedTransactions(queue, transactions);
}

void PluggableApplicationDelegate::restoreCompletedTransactionsFinished(SKPaymentQueue& queue) {
    for (const auto& plugin : plugins_) plugin->restoreCompletedTransactionsFinished(queue);
}

void PluggableApplicationDelegate::restoreCompletedTransactionsFailedWithError(
    SKPaymentQueue& queue, const std::exception_ptr& error) {
    for (const auto& plugin : plugins_) plugin->restoreCompletedTransactionsFailedWithError(queue, error);
}

bool PluggableApplicationDelegate::shouldAddStorePayment(SKPaymentQueue& queue,
                                                         const std::shared_ptr<SKPayment>& payment,
                                                         const std::shared_ptr<SKProduct>& product) {
    bool any = false;
    for (const auto& plugin : plugins_) any |= plugin->shouldAddStorePayment(queue, payment, product);
    return any;
}

} // namespace corvantile
