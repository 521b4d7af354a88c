#include "CorvantilePlay/detail/Proof/ScenarioPlay.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPluggable.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Application/UIApplication.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Store/SKPayment.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantilePlatform/Store/SKPaymentTransaction.hpp"
#include "CorvantilePlay/detail/Proof/ProofApp.hpp"
#include "CorvantilePlay/detail/Proof/PurchaseScenario.hpp"
#include "CorvantilePlay/detail/Proof/SteppedSink.hpp"
#include "HostCore/PluggableApplicationDelegate.hpp"

#include <algorithm>
#include <chrono>
#include <memory>
#include <set>

namespace corvantile::tool {

namespace {

using std::chrono::hours;

WriteSteps::Listener noteIn(const std::filesystem::path& file) {
    if (file.empty()) return nullptr;
    return [file](const std::string& moment) { appendLine(file, moment); };
}

class ScenarioPlay {
public:
    explicit ScenarioPlay(const ScenarioOptions& options)
        : steps_(std::make_shared<WriteSteps>(options.kill, noteIn(options.moments))),
          app_(options, steps_) {}

    void play() {
        rememberMarkers();
        app_.launch();
        for (const auto& stage : scenarioStages()) {
            take(stage);
            await(stage);
        }
        finishTransactions();
    }

private:
    // Events of what is marked already were sent by a process before, or lost with it. What is pending is
    // sent once more.
    void rememberMarkers() {
        for (const auto& stage : scenarioStages())
            for (const auto& record : stage.records)
                if (const auto entry = app_.platform().vault().load(record.marker, scenarioBundle))
                    if (isPlainMarker(*entry, record.marker)) markedBefore_.insert(record.marker);
    }

    void take(const ScenarioStage& stage) {
        using Kind = ScenarioStage::Kind;
        auto& store = app_.platform().store();
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
        case Kind::stopRenewing:
            if (!renews(stage.product)) break;
            return step("cancels " + stage.product, [&] { store.setRenews(stage.product, false); });
        case Kind::failBilling:
            if (store.settings().failingBilling.contains(stage.product)) break;
            return step("fails to pay " + stage.product, [&] { store.setBillingFails(stage.product, true); });
        case Kind::validate:
            return Corvantile::queryAppDelegate<IAPReceiptTrackingPluggable>()->trackValidatedPurchase(
                stage.product, std::nullopt);
        case Kind::reopen:
            auto& application = *app_.platform().ports().application;
            application.delegate()->willResignActive(application);
            return application.delegate()->didBecomeActive(application);
        }
    }

    template <class Act>
    void step(const std::string& what, Act act) {
        steps_->take("customer " + what, act);
    }

    [[nodiscard]] bool renews(const std::string& product) {
        const auto subscriptions = app_.platform().store().subscriptions();
        return std::any_of(subscriptions.begin(), subscriptions.end(), [&](const auto& subscription) {
            return subscription.productIdentifier == product && subscription.renews;
        });
    }

    [[nodiscard]] bool isBought(const std::string& product) {
        const auto isOf = [&](const auto& item) { return item.productIdentifier == product; };
        const auto purchases = app_.platform().store().purchases();
        const auto waiting = app_.platform().store().transactions();
        return std::any_of(purchases.begin(), purchases.end(), isOf) ||
               std::any_of(waiting.begin(), waiting.end(), isOf);
    }

    void await(const ScenarioStage& stage) {
        for (const auto& record : stage.records) {
            if (!markedBefore_.contains(record.marker)) awaited_ += static_cast<int>(linesOf(record).size());
            app_.await([this] { return app_.heard() >= awaited_; }, record.event + " is sent");
        }
        if (stage.beginsGracePeriod)
            app_.await([] { return NSUserDefaults::standardUserDefaults()->boolForKey(graceMarker); },
                       "the grace period is reported");
    }

    void finishTransactions() {
        const auto queue = SKPaymentQueue::defaultQueue();
        for (const auto& transaction : queue->transactions())
            step("has " + transaction->payment().productIdentifier() + " finished",
                 [&] { queue->finishTransaction(*transaction); });
    }

    const std::shared_ptr<WriteSteps> steps_;
    std::set<std::string> markedBefore_;
    int awaited_ = 0; // lines that the last sink is to hear
    ProofApp app_;
};

} // namespace

ExitCode playScenario(const ScenarioOptions& options) {
    ScenarioPlay(options).play();
    return ExitCode::success;
}

} // namespace corvantile::tool
