#include "Tools/corvantile/Prove/ScenarioPlay.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "DesktopPlatform/DesktopPlatform.hpp"
#include "DesktopPlatform/Foundation/SystemClock.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"
#include "LocalStore/LocalStore.hpp"
#include "Platform/Application/UIApplication.hpp"
#include "Platform/Foundation/Console.hpp"
#include "Platform/Foundation/DispatchQueue.hpp"
#include "Platform/Foundation/NSUserDefaults.hpp"
#include "Platform/Store/SKPayment.hpp"
#include "Platform/Store/SKPaymentQueue.hpp"
#include "Platform/Store/SKPaymentTransaction.hpp"
#include "Reactive/DisposeBag.hpp"
#include "Tools/corvantile/Prove/PurchaseScenario.hpp"
#include "Tools/corvantile/Prove/SteppedPorts.hpp"
#include "Tools/corvantile/Prove/SteppedSink.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace corvantile::tool {

namespace {

using std::chrono::hours;

constexpr std::chrono::seconds patience{20};
constexpr int hurry = 100;

class SilentConsole final : public Console {
public:
    void print(std::string_view) override {}
};

DesktopOptions optionsOf(const ScenarioOptions& options, const std::shared_ptr<WriteSteps>& steps) {
    DesktopOptions made{.bundleIdentifier = scenarioBundle,
                        .stateFolder = stateIn(options.folder),
                        .console = std::make_shared<SilentConsole>(),
                        .adjust = {.isOffline = true}};
    // The store's clock only jumps, and begins a day ahead: whatever midnight passes meanwhile, nothing was
    // bought before the app's first day.
    made.store = {.catalogue = options.catalogue, .clockRate = 0, .start = SystemClock().now() + hours(24)};
    made.decorate = [steps](Ports& ports) {
        stepThrough(ports, steps);
        hurryTimers(ports, hurry);
    };
    return made;
}

WriteSteps::Listener noteIn(const std::filesystem::path& file) {
    if (file.empty()) return nullptr;
    return [file](const std::string& moment) { appendLine(file, moment); };
}

AdjustAnalyticComponent::EventTokens tokens() {
    AdjustAnalyticComponent::EventTokens made{{totalEvent, totalEvent}, {graceEvent, graceEvent}};
    for (const auto& stage : scenarioStages())
        for (const auto& record : stage.records) made.emplace(record.event, record.event);
    return made;
}

class ScenarioPlay {
public:
    explicit ScenarioPlay(const ScenarioOptions& options)
        : options_(options),
          steps_(std::make_shared<WriteSteps>(options.kill, noteIn(options.moments))),
          platform_(optionsOf(options, steps_)) {}

    void play() {
        rememberMarkers();
        launch();
        for (const auto& stage : scenarioStages()) {
            take(stage);
            await(stage);
        }
        finishTransactions();
    }

private:
    // Events of what is marked already were sent by a process before, or lost with it.
    void rememberMarkers() {
        for (const auto& stage : scenarioStages())
            for (const auto& record : stage.records)
                if (platform_.vault().load(record.marker, scenarioBundle))
                    markedBefore_.insert(record.marker);
    }

    void launch() {
        const auto router = std::make_shared<AnalyticPlugin>();
        const auto database = std::make_shared<DatabasePlugin>();
        std::vector<IAPReceiptPlugin::Product> products;
        products.reserve(scenarioProducts().size());
        for (const auto& product : scenarioProducts()) products.push_back({product});
        auto& application = *platform_.ports().application;
        application.setDelegate(
            std::make_shared<PluggableApplicationDelegate>(PluggableApplicationDelegate::Plugins{
                std::make_shared<UserPreference>(std::make_shared<UserDefaultsDatabase>()), database, router,
                std::make_shared<FirstDatePlugin>(), std::make_shared<AdjustPlugin>("proofproof12", true),
                std::make_shared<IAPReceiptPlugin>(std::move(products)),
                std::make_shared<IAPReceiptTrackingPlugin>()}));
        bag_.insert(database->isLoaded().subscribe([this](bool isLoaded) { isLoaded_ = isLoaded; }));
        registerSinks(*router);
        static_cast<void>(application.delegate()->didFinishLaunchingWithOptions(application, {}));
        // Before anything else is written, so that the moments come in the same order each time.
        await([this] { return isLoaded_.load(); }, "the records are loaded");
        application.delegate()->didBecomeActive(application);
    }

    // The file comes last: what it has, all have.
    void registerSinks(AnalyticPlugin& router) {
        const auto told = [this, main = platform_.ports().queues->main()](const std::string& line) {
            if (line == eventLine(graceEvent)) return;
            ++heard_;
            main->async([] {}); // wakes the loop, which asks what it waits for
        };
        router.registerComponents(
            {std::make_shared<SteppedSink>("outbox", std::make_shared<AdjustAnalyticComponent>(tokens()),
                                           steps_, nullptr),
             std::make_shared<SteppedSink>("file", makeFileSink(sinkFileIn(options_.folder)), steps_, told)});
    }

    void take(const ScenarioStage& stage) {
        using Kind = ScenarioStage::Kind;
        auto& store = platform_.store();
        switch (stage.kind) {
        case Kind::buy:
            if (isBought(stage.product)) break;
            return step("buys " + stage.product, [&] {
                SKPaymentQueue::defaultQueue()->addPayment(std::make_shared<SKPayment>(stage.product));
            });
        case Kind::wait: {
            const auto target = store.purchases().front().date + hours(24 * stage.day);
            if (store.now() >= target) break;
            return step("lives on until day " + std::to_string(stage.day),
                        [&] { store.advance(target - store.now()); });
        }
        case Kind::failBilling:
            if (store.settings().failingBilling.contains(stage.product)) break;
            return step("fails to pay " + stage.product, [&] { store.setBillingFails(stage.product, true); });
        case Kind::validate:
            return Corvantile::queryAppDelegate<IAPReceiptTrackingPluggable>()->trackValidatedPurchase(
                stage.product, std::nullopt);
        case Kind::reopen:
            auto& application = *platform_.ports().application;
            application.delegate()->willResignActive(application);
            return application.delegate()->didBecomeActive(application);
        }
    }

    template <class Act>
    void step(const std::string& what, Act act) {
        steps_->take("customer " + what, act);
    }

    [[nodiscard]] bool isBought(const std::string& product) {
        const auto isOf = [&](const auto& item) { return item.productIdentifier == product; };
        const auto purchases = platform_.store().purchases();
        const auto waiting = platform_.store().transactions();
        return std::any_of(purchases.begin(), purchases.end(), isOf) ||
               std::any_of(waiting.begin(), waiting.end(), isOf);
    }

    void await(const ScenarioStage& stage) {
        for (const auto& record : stage.records) {
            if (!markedBefore_.contains(record.marker)) awaited_ += static_cast<int>(linesOf(record).size());
            await([this] { return heard_ >= awaited_; }, record.event + " is sent");
        }
        if (stage.beginsGracePeriod)
            await([] { return NSUserDefaults::standardUserDefaults()->boolForKey(graceMarker); },
                  "the grace period is reported");
    }

    void await(const std::function<bool()>& done, const std::string& what) {
        if (!platform_.runMainLoopUntil(done, patience))
            throw std::runtime_error("The proof has waited in vain until " + what);
    }

    void finishTransactions() {
        const auto queue = SKPaymentQueue::defaultQueue();
        for (const auto& transaction : queue->transactions())
            step("has " + transaction->payment().productIdentifier() + " finished",
                 [&] { queue->finishTransaction(*transaction); });
    }

    const ScenarioOptions options_;
    const std::shared_ptr<WriteSteps> steps_;
    std::set<std::string> markedBefore_;
    int awaited_ = 0; // lines that the last sink is to hear
    std::atomic<bool> isLoaded_{false};
    std::atomic<int> heard_{0};
    DesktopPlatform platform_; // whose threads use what is above
    rx::DisposeBag bag_;
};

} // namespace

ExitCode playScenario(const ScenarioOptions& options) {
    try {
        ScenarioPlay(options).play();
        return ExitCode::success;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return ExitCode::failed;
    }
}

} // namespace corvantile::tool
