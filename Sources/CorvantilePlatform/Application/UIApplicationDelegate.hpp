#pragma once

#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

namespace corvantile {

// The platform's lifecycle callbacks. Every callback has a harmless default. Threads: main.
class CORVANTILE_API UIApplicationDelegate : NonCopyable {
public:
    virtual ~UIApplicationDelegate();

    // False: the app cannot handle what it was launched for.
    virtual bool didFinishLaunchingWithOptions(UIApplication& application, const LaunchOptions& options);
    virtual void didBecomeActive(UIApplication& application);
    virtual void willResignActive(UIApplication& application);
    virtual void didEnterBackground(UIApplication& application);
    virtual void willEnterForeground(UIApplication& application);
    virtual void willTerminate(UIApplication& application);
    virtual void didReceiveMemoryWarning(UIApplication& application);
    virtual void didRegisterForRemoteNotificationsWithDeviceToken(UIApplication& application,
                                                                  const std::vector<std::uint8_t>& token);
    virtual void didFailToRegisterForRemoteNotificationsWithError(UIApplication& application,
                                                                  const std::exception_ptr& error);
    // True: the URL was handled.
    virtual bool openURL(UIApplication& application, const std::string& url);
};

} // namespace corvantile
