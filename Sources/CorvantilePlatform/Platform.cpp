#include "CorvantilePlatform/Platform.hpp"

#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Application/UIApplicationDelegate.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Version.hpp"

#include <atomic>
#include <utility>

namespace corvantile {

namespace {

std::atomic<Platform*> installedPlatform{nullptr};

} // namespace

Platform::Platform(Ports ports) : ports_(std::move(ports)), process_(std::make_unique<Process>()) {}

Platform::~Platform() {
    if (!hasEnded()) fatalError("A platform was destroyed before it was ended.");
}

Platform& Platform::current() {
    Platform* const platform = installedPlatform.load(std::memory_order_acquire);
    if (platform == nullptr) fatalError("No platform is installed.");
    return *platform;
}

bool Platform::isInstalled() { return installedPlatform.load(std::memory_order_acquire) != nullptr; }

Process& Platform::process() {
    if (hasEnded()) fatalError("The process of this platform has ended.");
    return *process_;
}

void Platform::install() { installedPlatform.store(this, std::memory_order_release); }

void Platform::end() {
    if (hasEnded()) return;
    Platform* const previous = installedPlatform.exchange(this, std::memory_order_acq_rel);
    stop();
    const auto livePlugins = process_->livePlugins();
    ports_.application->setDelegate(nullptr);
    process_->release();
    process_.reset();
    if (const int count = livePlugins->load(); count > 0) reportOutlived(count);
    installedPlatform.store(previous == this ? nullptr : previous, std::memory_order_release);
}

std::string_view libraryVersion() { return CORVANTILE_VERSION; }

} // namespace corvantile
