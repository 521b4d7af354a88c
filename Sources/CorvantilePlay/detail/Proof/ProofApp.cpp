#include "CorvantilePlay/detail/Proof/ProofApp.hpp"

#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/AdNetwork/AnalyticPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "CorvantileDesktop/Foundation/detail/SystemClock.hpp"
#include "CorvantileIAP/IAPReceiptPlugin.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlay/detail/Output/Consoles.hpp"
#include "CorvantilePlay/detail/Proof/PurchaseScenario.hpp"
#include "CorvantilePlay/detail/Proof/SteppedSink.hpp"
#include "CorvantilePlay/detail/Proof/WriteSteps.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"

#include <chrono>
#include <stdexcept>
#include <utility>
#include <vector>

namespace corvantile::tool {

namespace {

constexpr std::chrono::seconds stepTimeout{20};
constexpr int timerSpeed = 100;

DesktopOptions optionsOf(const ScenarioOptions& options, const std::shared_ptr<WriteSteps>& steps) {
    DesktopOptions made{.bundleIdentifier = scenarioBundle,
                        .stateFolder = stateIn(options.folder),
                        .console = std::make_shared<SilentConsole>(),
                        .adjust = {.isOffline = true}};
    // The store's clock only jumps, and begins a day ahead: whatever midnight passes meanwhile, nothing was
    // bought before the app's first day.
    made.store = {.catalogue = options.catalogue,
                  .clockRate = 0,
                  .start = SystemClock().now() + std::chrono::hours(24)};
    made.decorate = [steps](Ports& ports) {
        stepThrough(ports, steps);
        speedUpTimers(ports, timerSpeed);
    };
    return made;
}

AdjustAnalyticComponent::EventTokens tokens() {
    AdjustAnalyticComponent::EventTokens made{{totalEvent, totalEvent}, {graceEvent, graceEvent}};
    for (const auto& stage : scenarioStages())
        for (const auto& record : stage.records) made.emplace(record.event, record.event);
    return made;
}

} // namespace

ProofApp::ProofApp(const ScenarioOptions& options, std::shared_ptr<WriteSteps> steps)
    : options_(options), steps_(std::move(steps)), platform_(optionsOf(options_, steps_)) {}

ProofApp::~ProofApp() = default;

void ProofApp::launch() {
    using Delivery = IAPReceiptTrackingPlugin::Delivery;
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
            std::make_shared<IAPReceiptTrackingPlugin>(options_.atLeastOnce ? Delivery::atLeastOnce
                                                                            : Delivery::atMostOnce)}));
    bag_.insert(database->isLoaded().subscribe([this](bool isLoaded) { isLoaded_ = isLoaded; }));
    registerSinks(*router);
    static_cast<void>(application.delegate()->didFinishLaunchingWithOptions(application, {}));
    // Before anything else is written, so that the moments come in the same order each time.
    await([this] { return isLoaded_.load(); }, "the records are loaded");
    application.delegate()->didBecomeActive(application);
}

// The file comes last: what it has, all have.
void ProofApp::registerSinks(AnalyticPlugin& router) {
    const auto delivered = [this, main = platform_.ports().queues->main()](const std::string& line) {
        if (line == eventLine(graceEvent)) return;
        ++heard_;
        main->async([] {}); // wakes the loop, which asks what it waits for
    };
    router.registerComponents(
        {std::make_shared<SteppedSink>("outbox", std::make_shared<AdjustAnalyticComponent>(tokens()), steps_,
                                       nullptr),
         std::make_shared<SteppedSink>("file", makeFileSink(sinkFileIn(options_.folder)), steps_,
                                       delivered)});
}

void ProofApp::await(const std::function<bool()>& done, const std::string& what) {
    if (!platform_.runMainLoopUntil(done, stepTimeout))
        throw std::runtime_error("The proof has waited in vain until " + what);
}

} // namespace corvantile::tool
