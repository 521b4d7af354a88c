#include "CorvantilePlatform/Platform.hpp"

#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Version.hpp"

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace corvantile {

namespace {

std::atomic<Platform*> currentPlatform{nullptr};

// Every platform that has not ended, the current one last. Few, and changed only by `install` and `end`.
struct InstalledPlatforms {
    std::mutex mutex;
    std::vector<Platform*> list;

    void makeCurrent(Platform* platform) {
        const std::lock_guard lock(mutex);
        std::erase(list, platform);
        list.push_back(platform);
        publish();
    }
    void remove(Platform* platform) {
        const std::lock_guard lock(mutex);
        std::erase(list, platform);
        publish();
    }

private:
    void publish() { currentPlatform.store(list.empty() ? nullptr : list.back(), std::memory_order_release); }
};

InstalledPlatforms& installedPlatforms() {
    static InstalledPlatforms platforms;
    return platforms;
}

} // namespace

Platform::Platform(Ports ports) : ports_(std::move(ports)), process_(std::make_unique<Process>()) {}

Platform::~Platform() {
    if (!hasEnded()) fatalError("A platform was destroyed before it was ended.");
}

Platform& Platform::current() {
    Platform* const platform = currentPlatform.load(std::memory_order_acquire);
    if (platform == nullptr) fatalError("No platform is installed.");
    return *platform;
}

bool Platform::isInstalled() { return currentPlatform.load(std::memory_order_acquire) != nullptr; }

Process& Platform::process() {
    if (hasEnded()) fatalError("The process of this platform has ended.");
    return *process_;
}

void Platform::install() { installedPlatforms().makeCurrent(this); }

void Platform::end() {
    if (hasEnded()) return;
    currentPlatform.store(this, std::memory_order_release);
    stop();
    const auto livePlugins = process_->livePlugins();
    ports_.application->setDelegate(nullptr);
    process_->release();
    process_.reset();
    if (const int count = livePlugins->load(); count > 0) reportOutlived(count);
    installedPlatforms().remove(this);
}

std::string_view libraryVersion() { return CORVANTILE_VERSION; }

} // namespace corvantile
