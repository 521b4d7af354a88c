#pragma once

#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/DisposableSlot.hpp"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class AnalyticPluggable;
class NSUserDefaults;
class PendingPurchases;
struct ProductCategory;
struct PurchaseDecision;
struct RenewalInfo;

// Turns the user's purchase records into events, each transaction's at most once unless `Delivery` says
// otherwise: a marker in the keychain is saved first, and where it cannot be, nothing is sent. In a dry run
// no transaction is marked, so that every pass reports again; a grace period is marked even then. Each
// activation begins a pass over what is bought and will be; passes may overlap, and the keychain's refusal to
// save a marker twice decides between them. No pass begins at an activation in debug mode without a dry run.
// Needs an AnalyticPluggable, a FirstDatePluggable and an IAPReceiptPluggable among the host's plug-ins:
// their lack is fatal. A marker that cannot be saved goes to HostCore::omitBlock. Threads: events are sent
// from background queues, those of grace periods from where renewals are published. Held by shared_ptr, as
// plug-ins are.
class CORVANTILE_API IAPReceiptTrackingPlugin final
    : public IAPReceiptTrackingPluggable,
      public std::enable_shared_from_this<IAPReceiptTrackingPlugin> {
public:
    // What the end of the process in the midst of a transaction's events does to them.
    enum class Delivery {
        atMostOnce,  // those that were not sent yet are lost
        atLeastOnce, // the next activation sends all of them again, as they were decided
    };

    // At most once.
    IAPReceiptTrackingPlugin();
    // At least once, each marker is saved together with what was decided, and replaced by the plain marker
    // after the last sink has the last event. What an earlier process has left is sent first at an
    // activation, inside the call; a validated purchase when the host reports it again.
    explicit IAPReceiptTrackingPlugin(Delivery delivery);
    ~IAPReceiptTrackingPlugin() override;

    void didBecomeActive(UIApplication& application) override;
    // Ends the last pass over the records; renewals and validated purchases are still listened to.
    void willResignActive(UIApplication& application) override;

    // Works in debug mode too.
    void trackValidatedPurchase(const std::string& productID,
                                const std::optional<EventParameters>& params) override;

private:
    using Categories = std::vector<ProductCategory>;

    void trackReceipts();
    void sendLeftBehind(AnalyticPluggable& analytics) const;
    void reportSafely(const PurchaseDecision& decision, AnalyticPluggable& analytics) const;
    void reportRecords(const Categories& prepared, AnalyticPluggable& analytics) const;
    void reportGracePeriods(const std::vector<RenewalInfo>& renewals, AnalyticPluggable& analytics) const;
    [[nodiscard]] bool claimValidated(const std::string& key) const;
    void reportValidated(const Categories& prepared, const std::string& productID,
                         const std::optional<EventParameters>& params, AnalyticPluggable& analytics) const;
    static void send(const PurchaseDecision& decision, AnalyticPluggable& analytics);
    // Both answer the product's own name for what happened.
    static std::string recordFirstTransaction(const PurchaseDecision& decision, AnalyticPluggable& analytics);
    static std::string recordConsecutiveTransaction(const PurchaseDecision& decision,
                                                    AnalyticPluggable& analytics);

    // Replacing a slot's content does not dispose the previous subscription.
    rx::DisposableSlot disposable_;
    rx::DisposableSlot gracePeriodDisposable_;
    rx::DisposableSlot validationDisposable_;
    const std::shared_ptr<NSUserDefaults> userDefaults_;
    const std::unique_ptr<const PendingPurchases> pending_; // null: at most once
};

} // namespace corvantile
