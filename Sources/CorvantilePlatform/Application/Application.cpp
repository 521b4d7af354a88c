#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Platform.hpp"

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

} // namespace corvantile
