#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileTest/RecordingAdjust.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"
#include "Tests/EndToEnd/StoryApp.hpp"

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"

#include <fstream>
#endif

// The story's app on a platform: `launch`, `terminate`, `goTo` a date, running or not; `settle` until `done`;
// what the attribution SDK was given, over all processes: tokens of events, transactions of subscriptions.
namespace corvantile {

// In virtual time: what falls due happens at its own moment.
class TestStory {
public:
    void launch() {
        TestOptions options;
        options.localStore = TestStoreOptions{.catalogue = storyCatalogue};
        platform_ = TestPlatform::launch(device_, options);
    }
    void terminate() {
        if (platform_) sent_ = sdk();
        platform_.reset();
    }
    [[nodiscard]] LocalStore& store() { return platform_->localStore(); }
    void goTo(Date date) {
        const auto duration = std::chrono::duration_cast<std::chrono::nanoseconds>(date - device_.now());
        if (platform_)
            platform_->advance(duration);
        else
            device_.pass(duration);
    }
    void settle(const std::function<bool()>&) {
        if (platform_) platform_->runUntilIdle();
    }
    [[nodiscard]] Lines sdk() {
        auto all = sent_;
        for (const auto& call : platform_->adjust().calls()) {
            if (const auto* const event = std::get_if<ADJEvent>(&call)) all.push_back(event->eventToken());
            if (const auto* const bought = std::get_if<ADJSubscription>(&call))
                all.push_back(bought->transactionId());
        }
        return all;
    }

private:
    TestDevice device_;
    std::unique_ptr<TestPlatform> platform_;
    Lines sent_; // in processes that have ended
};

#ifdef CORVANTILE_HAS_DESKTOP_PLATFORM
// On real threads and files. The store's clock jumps, and the app's follows it.
class DesktopStory {
public:
    DesktopStory() { std::ofstream(folder_.path() / "story.storekit") << storyCatalogue; }

    void launch() {
        DesktopOptions options{.stateFolder = folder_.path() / "state", .adjust = {.isOffline = true}};
        options.store = {
            .catalogue = folder_.path() / "story.storekit", .clockRate = 0, .start = TestDevice::startDate};
        platform_ = std::make_unique<DesktopPlatform>(std::move(options));
        if (target_) goTo(*std::exchange(target_, std::nullopt));
    }
    void terminate() { platform_.reset(); }
    [[nodiscard]] LocalStore& store() { return platform_->store(); }
    void goTo(Date date) {
        if (platform_)
            store().advance(date - store().now());
        else
            target_ = date;
    }
    void settle(const std::function<bool()>& done) {
        if (platform_) static_cast<void>(platform_->runMainLoopUntil(done, std::chrono::seconds(10)));
    }
    [[nodiscard]] Lines sdk() {
        Lines lines;
        for (const auto& package : platform_->adjust().packages()) {
            if (package.kind == PackageKind::event) lines.push_back(package.eventToken);
            if (package.kind == PackageKind::subscription) lines.push_back(package.transactionId);
        }
        return lines;
    }

private:
    TemporaryFolder folder_;
    std::optional<Date> target_; // reached while the app did not run
    std::unique_ptr<DesktopPlatform> platform_;
};

using Stories = testing::Types<TestStory, DesktopStory>;
#else
using Stories = testing::Types<TestStory>;
#endif

} // namespace corvantile
