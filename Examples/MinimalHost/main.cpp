#include "Corvantile/Corvantile.hpp"
#include "Corvantile/DebugPlugin.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/AdNetwork/NetworkReachability.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"

#include <chrono>
#include <memory>

namespace cv = corvantile;

int main() {
    cv::DesktopPlatform platform(cv::DesktopOptions{.bundleIdentifier = "com.example.minimalhost"});
    const auto app = platform.ports().application;

    // The debug plug-in comes first: its switches are set while the list is made.
    app->setDelegate(
        std::make_shared<cv::PluggableApplicationDelegate>(cv::PluggableApplicationDelegate::Plugins{
            std::make_shared<cv::DebugPlugin>(true, false), std::make_shared<cv::AnalyticPlugin>()}));
    const auto analytics = cv::Corvantile::queryAppDelegate<cv::AnalyticPluggable>();
    analytics->registerComponents({std::make_shared<cv::ConsoleComponent>()});

    // Events made before the first report say that the network status is not known.
    const auto network = cv::NetworkReachability::shared();
    network->startListening();
    const auto isKnown = [&] { return network->networkStatus() != cv::NetworkReachabilityStatus::unknown; };
    platform.runMainLoopUntil(isKnown, std::chrono::seconds(1));

    app->delegate()->didFinishLaunchingWithOptions(*app, {});
    app->delegate()->didBecomeActive(*app);
    analytics->track(cv::AnalyticEvent("open", {{"source", "icon"}}));
}
