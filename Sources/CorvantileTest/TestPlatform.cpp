#include "CorvantileTest/TestPlatform.hpp"

#include "CorvantileCrypto/OpenSSLCryptor.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalPaymentQueue.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalStoreClock.hpp"
#include "CorvantileLocalStore/detail/Ports/LocalStoreRequests.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantileTest/RecordingAdjust.hpp"
#include "CorvantileTest/RecordingConsole.hpp"
#include "CorvantileTest/ScriptedAds.hpp"
#include "CorvantileTest/ScriptedHTTP.hpp"
#include "CorvantileTest/ScriptedRandom.hpp"
#include "CorvantileTest/ScriptedReachability.hpp"
#include "CorvantileTest/ScriptedStore.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"
#include "CorvantileTest/detail/DeviceLocalStore.hpp"
#include "CorvantileTest/detail/DevicePorts.hpp"
#include "CorvantileTest/detail/VirtualQueues.hpp"

#include <string>
#include <utility>

namespace corvantile {

// The ports under their own types, for the test.
struct TestPlatform::Parts {
    Parts(TestDevice& device, const TestOptions& options)
        : link(std::make_shared<DeviceLink>(device)),
          queues(std::make_shared<VirtualQueues>(device, options.seed, options.itemLimit)),
          console(std::make_shared<RecordingConsole>(link, options.echoesConsole)),
          reachability(std::make_shared<ScriptedReachability>()),
          random(std::make_shared<ScriptedRandom>(link)),
          store(std::make_shared<ScriptedStore>(link, queues->main())),
          localStore(options.localStore ? makeLocalStore(link, options, console) : nullptr) {}

    Ports ports(const TestOptions& options) const {
        Ports made{.application = makeApplication(),
                   .device = makeDevice(link),
                   .mainBundle = makeBundle(link, options.bundleIdentifier, options.resources),
                   .queues = queues,
                   .clock = makeClock(link),
                   .console = console,
                   .reachability = reachability,
                   .keychain = makeKeychain(link, options.reportsUnreadableEntries ? console : nullptr),
                   .userDefaults = makeUserDefaults(link),
                   .random = random,
                   .cryptor = std::make_shared<OpenSSLCryptor>(),
                   .http = http,
                   .attribution = ads,
                   .advertising = ads,
                   .adjust = adjust,
                   .paymentQueue = store,
                   .storeRequests = store};
        if (localStore) {
            const auto payments = LocalPaymentQueue::make(localStore, queues->main(), console);
            made.paymentQueue = payments;
            made.storeRequests = std::make_shared<LocalStoreRequests>(localStore, payments);
            if (options.localStore->setsAppTime)
                made.clock = std::make_shared<LocalStoreClock>(localStore, made.clock);
        }
        return made;
    }

    const std::shared_ptr<DeviceLink> link;
    const std::shared_ptr<VirtualQueues> queues;
    const std::shared_ptr<RecordingConsole> console;
    const std::shared_ptr<ScriptedReachability> reachability;
    const std::shared_ptr<ScriptedRandom> random;
    const std::shared_ptr<ScriptedStore> store;
    const std::shared_ptr<LocalStore> localStore; // null unless chosen
    const std::shared_ptr<ScriptedHTTP> http = std::make_shared<ScriptedHTTP>();
    const std::shared_ptr<ScriptedAds> ads = std::make_shared<ScriptedAds>();
    const std::shared_ptr<RecordingAdjust> adjust = std::make_shared<RecordingAdjust>(queues->main());
};

// Makes this process the current one while it exists, and then the former one again, if there was one.
class TestPlatform::CurrentScope {
public:
    explicit CurrentScope(TestPlatform& platform)
        : former_(isInstalled() ? dynamic_cast<TestPlatform*>(&Platform::current()) : nullptr) {
        if (platform.hasEnded()) fatalError("This process has ended: it runs nothing any more.");
        platform.install();
    }
    ~CurrentScope() {
        if (former_ != nullptr) former_->install();
    }
    CurrentScope(const CurrentScope&) = delete;
    CurrentScope& operator=(const CurrentScope&) = delete;

private:
    TestPlatform* const former_;
};

std::unique_ptr<TestPlatform> TestPlatform::launch(TestDevice& device, TestOptions options) {
    auto parts = std::make_unique<Parts>(device, options);
    return std::unique_ptr<TestPlatform>(new TestPlatform(std::move(options), std::move(parts)));
}

std::unique_ptr<TestPlatform> TestPlatform::relaunch(std::unique_ptr<TestPlatform> ended) {
    auto& device = ended->device();
    auto options = ended->options_;
    ended.reset();
    return launch(device, std::move(options));
}

std::unique_ptr<TestPlatform> TestPlatform::reinstall(std::unique_ptr<TestPlatform> deleted) {
    deleted->kill();
    deleted->device().reinstall();
    return relaunch(std::move(deleted));
}

TestPlatform::TestPlatform(TestOptions options, std::unique_ptr<Parts> parts)
    : Platform(parts->ports(options)), options_(std::move(options)), parts_(std::move(parts)) {
    device().processLaunched();
    install();
}

TestPlatform::~TestPlatform() { endOnDevice(); }

void TestPlatform::kill() {
    parts_->link->cut();
    endOnDevice();
}

void TestPlatform::endOnDevice() {
    if (hasEnded()) return;
    end();
    device().processEnded();
}

void TestPlatform::makeCurrent() {
    if (hasEnded()) fatalError("This process has ended: it cannot become the current one.");
    install();
}

void TestPlatform::runUntilIdle() {
    const CurrentScope scope(*this);
    parts_->queues->runUntilIdle();
}

void TestPlatform::advance(std::chrono::nanoseconds duration) {
    const CurrentScope scope(*this);
    parts_->queues->advance(duration);
}

bool TestPlatform::runUntil(const std::function<bool()>& done, std::chrono::nanoseconds limit) {
    const CurrentScope scope(*this);
    return parts_->queues->runUntil(done, limit);
}

std::vector<QueueDescription> TestPlatform::queues() const { return parts_->queues->made(); }
std::size_t TestPlatform::readyItems() const { return parts_->queues->readyItems(); }
std::size_t TestPlatform::pendingTimers() const { return parts_->queues->pendingTimers(); }

TestDevice& TestPlatform::device() const { return parts_->link->device(); }
RecordingConsole& TestPlatform::console() const { return *parts_->console; }
ScriptedReachability& TestPlatform::reachability() const { return *parts_->reachability; }
ScriptedRandom& TestPlatform::random() const { return *parts_->random; }
ScriptedStore& TestPlatform::store() const { return *parts_->store; }
LocalStore& TestPlatform::localStore() const {
    if (!parts_->localStore)
        fatalError("This process has a scripted store: TestOptions chooses a local one.");
    return *parts_->localStore;
}
ScriptedHTTP& TestPlatform::http() const { return *parts_->http; }
ScriptedAds& TestPlatform::ads() const { return *parts_->ads; }
RecordingAdjust& TestPlatform::adjust() const { return *parts_->adjust; }

void TestPlatform::stop() {
    parts_->reachability->close();
    parts_->store->close();
    parts_->queues->close();
}

void TestPlatform::reportOutlived(int count) {
    fatalError(std::to_string(count) +
               (count == 1 ? " plug-in outlived its process." : " plug-ins outlived their process.") +
               " Look for a variable of the test that still holds one, or a callback or stream that keeps "
               "one alive.");
}

} // namespace corvantile
