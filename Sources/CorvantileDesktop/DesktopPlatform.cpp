#include "CorvantileDesktop/DesktopPlatform.hpp"

#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"
#include "CorvantileDesktop/detail/DesktopParts.hpp"
#include "CorvantileDesktop/detail/Queues/SerialQueue.hpp"
#include "CorvantilePlatform/FatalError.hpp"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

namespace corvantile {

namespace {

using Moment = std::chrono::steady_clock::time_point;

// How often an idle loop checks a condition that another thread may make true.
constexpr std::chrono::milliseconds conditionInterval{5};

Moment momentAfter(std::chrono::nanoseconds duration) {
    const auto now = std::chrono::steady_clock::now();
    return duration > Moment::max() - now ? Moment::max() : now + duration;
}

DesktopOptions checked(DesktopOptions options) {
    const auto& name = options.bundleIdentifier;
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
        fatalError("A bundle identifier must be one file name: '" + name + "'.");
    if (options.stateFolder.empty()) options.stateFolder = defaultStateFolder(name);
    return options;
}

void requireMainThread(const Executors& executors) {
    if (!executors.isMainThread() || SerialQueue::runningItem())
        fatalError("A platform's main loop runs and ends only on its main thread, outside any item.");
}

} // namespace

DesktopPlatform::DesktopPlatform(DesktopOptions options)
    : DesktopPlatform(checked(std::move(options)), std::make_unique<Parts>()) {}

DesktopPlatform::DesktopPlatform(DesktopOptions options, std::unique_ptr<Parts> parts)
    : Platform(parts->ports(options)),
      stateFolder_(std::move(options.stateFolder)),
      parts_(std::move(parts)) {
    install();
}

DesktopPlatform::~DesktopPlatform() { end(); }

Vault& DesktopPlatform::vault() const { return *parts_->vault; }
LocalAds& DesktopPlatform::ads() const { return *parts_->ads; }

void DesktopPlatform::runMainLoop() {
    requireMainThread(*parts_->executors);
    auto& loop = parts_->executors->main();
    do {
        parts_->userDefaults->beginTurn();
    } while (loop.run_one() != 0);
    loop.restart();
}

bool DesktopPlatform::runMainLoopUntil(const std::function<bool()>& done, std::chrono::nanoseconds timeout) {
    requireMainThread(*parts_->executors);
    auto& loop = parts_->executors->main();
    const auto end = momentAfter(timeout);
    bool isDone = done();
    for (; !isDone && !loop.stopped() && std::chrono::steady_clock::now() < end; isDone = done()) {
        parts_->userDefaults->beginTurn();
        loop.run_one_until(std::min(end, momentAfter(conditionInterval)));
    }
    loop.restart();
    return isDone;
}

void DesktopPlatform::runMainLoopFor(std::chrono::nanoseconds duration) {
    requireMainThread(*parts_->executors);
    auto& loop = parts_->executors->main();
    const auto end = momentAfter(duration);
    do {
        parts_->userDefaults->beginTurn();
    } while (loop.run_one_until(end) != 0);
    loop.restart();
}

void DesktopPlatform::stopMainLoop() { parts_->executors->main().stop(); }

void DesktopPlatform::stop() {
    requireMainThread(*parts_->executors);
    parts_->closeHTTP();
    parts_->executors->close();
    parts_->reachability->close();
    parts_->executors->discard();
}

void DesktopPlatform::reportOutlived(int count) {
    std::fprintf(stderr, "Corvantile: %d plug-in(s) outlived their process: somebody still holds them.\n",
                 count);
}

} // namespace corvantile
