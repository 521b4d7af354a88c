#pragma once

#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransactionObserver.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace corvantile {

// The host's application delegate: owns the plug-ins and forwards every callback to all of them, in the order
// of the list. It observes no payment queue by itself: plug-ins that need one do so on their own, and a host
// that registers its delegate as well makes them hear everything twice.
// Threads: callbacks on main; look-ups on any.
class CORVANTILE_API PluggableApplicationDelegate : public UIApplicationDelegate,
                                                    public SKPaymentTransactionObserver {
public:
    using Plugins = std::vector<std::shared_ptr<PluggableApplicationDelegateService>>;

    // Takes a braced list too, whose plug-ins are then made in its order: the debug plug-in comes first.
    // A null plug-in is a fatal error.
    explicit PluggableApplicationDelegate(Plugins plugins);
    ~PluggableApplicationDelegate() override;

    // The first plug-in that is a `Service`; null when none is.
    template <class Service>
    [[nodiscard]] std::shared_ptr<Service> queryService() const {
        for (const auto& plugin : plugins_)
            if (auto service = std::dynamic_pointer_cast<Service>(plugin)) return service;
        return nullptr;
    }

    // True if every plug-in says so.
    bool didFinishLaunchingWithOptions(UIApplication& application, const LaunchOptions& options) override;
    void didBecomeActive(UIApplication& application) override;
    void willResignActive(UIApplication& application) override;
    void didEnterBackground(UIApplication& application) override;
    void willEnterForeground(UIApplication& application) override;
    void willTerminate(UIApplication& application) override;
    void didReceiveMemoryWarning(UIApplication& application) override;
    void didRegisterForRemoteNotificationsWithDeviceToken(UIApplication& application,
                                                          const std::vector<std::uint8_t>& token) override;
    void didFailToRegisterForRemoteNotificationsWithError(UIApplication& application,
                                                          const std::exception_ptr& error) override;
    // True if any plug-in handled it.
    bool openURL(UIApplication& application, const std::string& url) override;

    void updatedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override;
    void removedTransactions(SKPaymentQueue& queue, const Transactions& transactions) override;
    void restoreCompletedTransactionsFinished(SKPaymentQueue& queue) override;
    void restoreCompletedTransactionsFailedWithError(SKPaymentQueue& queue,
                                                     const std::exception_ptr& error) override;
    // True if any plug-in says so.
    bool shouldAddStorePayment(SKPaymentQueue& queue, const std::shared_ptr<SKPayment>& payment,
                               const std::shared_ptr<SKProduct>& product) override;

private:
    const Plugins plugins_;
};

} // namespace corvantile
