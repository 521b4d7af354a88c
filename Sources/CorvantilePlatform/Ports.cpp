#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"
#include "CorvantilePlatform/Ads/AAAttribution.hpp"
#include "CorvantilePlatform/Ads/ASIdentifierManager.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantilePlatform/Network/HTTPClient.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Security/Cryptor.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransactionObserver.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

// What every port needs in a source, and little more than that: its destructor, the way to the installed one,
// and the callbacks that do nothing unless a class overrides them.
namespace corvantile {

UIApplication::~UIApplication() = default;
UIDevice::~UIDevice() = default;
UIApplicationDelegate::~UIApplicationDelegate() = default;

std::shared_ptr<UIApplication> UIApplication::shared() { return Platform::current().ports().application; }
std::shared_ptr<UIDevice> UIDevice::current() { return Platform::current().ports().device; }

bool UIApplicationDelegate::didFinishLaunchingWithOptions(UIApplication&, const LaunchOptions&) {
    return true;
}
void UIApplicationDelegate::didBecomeActive(UIApplication&) {}
void UIApplicationDelegate::willResignActive(UIApplication&) {}
void UIApplicationDelegate::didEnterBackground(UIApplication&) {}
void UIApplicationDelegate::willEnterForeground(UIApplication&) {}
void UIApplicationDelegate::willTerminate(UIApplication&) {}
void UIApplicationDelegate::didReceiveMemoryWarning(UIApplication&) {}
void UIApplicationDelegate::didRegisterForRemoteNotificationsWithDeviceToken(
    UIApplication&, const std::vector<std::uint8_t>&) {}
void UIApplicationDelegate::didFailToRegisterForRemoteNotificationsWithError(UIApplication&,
                                                                             const std::exception_ptr&) {}
bool UIApplicationDelegate::openURL(UIApplication&, const std::string&) { return false; }

PaymentObserverRegistration::~PaymentObserverRegistration() = default;
SKPaymentQueue::~SKPaymentQueue() = default;

std::shared_ptr<SKPaymentQueue> SKPaymentQueue::defaultQueue() {
    return Platform::current().ports().paymentQueue;
}

SKPaymentTransactionObserver::~SKPaymentTransactionObserver() = default;

void SKPaymentTransactionObserver::updatedTransactions(SKPaymentQueue&, const Transactions&) {}
void SKPaymentTransactionObserver::removedTransactions(SKPaymentQueue&, const Transactions&) {}
void SKPaymentTransactionObserver::restoreCompletedTransactionsFinished(SKPaymentQueue&) {}
void SKPaymentTransactionObserver::restoreCompletedTransactionsFailedWithError(SKPaymentQueue&,
                                                                               const std::exception_ptr&) {}
bool SKPaymentTransactionObserver::shouldAddStorePayment(SKPaymentQueue&, const std::shared_ptr<SKPayment>&,
                                                         const std::shared_ptr<SKProduct>&) {
    return false;
}

StoreRequests::~StoreRequests() = default;

std::shared_ptr<StoreRequests> StoreRequests::shared() { return Platform::current().ports().storeRequests; }

Clock::~Clock() = default;
Date Clock::deviceNow() const { return now(); }

DispatchQueue::~DispatchQueue() = default;
DispatchQueues::~DispatchQueues() = default;

std::shared_ptr<DispatchQueue> DispatchQueue::main() { return Platform::current().ports().queues->main(); }

NSBundle::~NSBundle() = default;

std::shared_ptr<NSBundle> NSBundle::main() { return Platform::current().ports().mainBundle; }

Cryptor::~Cryptor() = default;
SecureRandom::~SecureRandom() = default;

HTTPClient::~HTTPClient() = default;

std::shared_ptr<HTTPClient> HTTPClient::shared() { return Platform::current().ports().http; }

NetworkReachabilityManager::~NetworkReachabilityManager() = default;
NetworkReachabilityManagers::~NetworkReachabilityManagers() = default;

AAAttribution::~AAAttribution() = default;
ASIdentifierManager::~ASIdentifierManager() = default;

std::string AAAttribution::attributionToken() { return Platform::current().ports().attribution->token(); }

std::shared_ptr<ASIdentifierManager> ASIdentifierManager::shared() {
    return Platform::current().ports().advertising;
}

AdjustDelegate::~AdjustDelegate() = default;

void AdjustDelegate::adjustAttributionChanged(const std::optional<ADJAttribution>&) {}
void AdjustDelegate::adjustEventTrackingSucceeded(const std::optional<ADJEventSuccess>&) {}
void AdjustDelegate::adjustEventTrackingFailed(const std::optional<ADJEventFailure>&) {}
void AdjustDelegate::adjustSessionTrackingSucceeded(const std::optional<ADJSessionSuccess>&) {}
void AdjustDelegate::adjustSessionTrackingFailed(const std::optional<ADJSessionFailure>&) {}
bool AdjustDelegate::adjustDeeplinkResponse(const std::optional<std::string>&) { return false; }
void AdjustDelegate::adjustConversionValueUpdated(const std::optional<int>&) {}

} // namespace corvantile
