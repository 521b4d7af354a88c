#include "Corvantile/Corvantile.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Version.hpp"

#include <chrono>

// Lets a background queue and the main queue do something once. Returns how far it got; 3 is all the way.
extern "C" int corvantile_bridge_steps() {
    namespace cv = corvantile;
    cv::DesktopPlatform platform(cv::DesktopOptions{.bundleIdentifier = "com.example.bridge"});
    int steps = cv::libraryVersion() == CORVANTILE_VERSION ? 1 : 0;
    const auto background = platform.ports().queues->makeSerial("bridge", cv::QualityOfService::background);
    background->async([&] { cv::DispatchQueue::main()->async([&] { ++steps; }); });
    const bool isDone = platform.runMainLoopUntil([&] { return steps == 2; }, std::chrono::seconds(10));
    return isDone && !cv::Corvantile::debug() ? 3 : steps;
}
