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
struct ProductCategory;
struct PurchaseDecision;
struct RenewalInfo;

// Turns the user's purchase records into events, each transaction's at most once: a marker in the keychain is
// saved first, and where it cannot be, nothing is sent. In a dry run no transaction is marked, so that
// every pass reports again; a grace period is marked even then. Each activation begins a pass over what is
// bought and will be; passes may overlap, and the keychain's refusal to save a marker twice decides between
// them. No pass begins at an activation in debug mode without a dry run. Needs an AnalyticPluggable, a
// FirstDatePluggable and an IAPReceiptPluggable among the host's plug-ins: their lack is fatal. A marker that
// cannot be saved goes to HostCore::omitBlock. Threads: events are sent from background queues, those of
// grace periods from where renewals are published. Held by shared_ptr, as plug-ins are.
class CORVANTILE_API IAPReceiptTrackingPlugin final
    : public IAPReceiptTrackingPluggable,
      public std::enable_shared_from_this<IAPReceiptTrackingPlugin> {
public:
    IAPReceiptTrackingPlugin();
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
    void reportRecords(const Categories& prepared, AnalyticPluggable& analytics) const;
    void reportGracePeriods(const std::vector<RenewalInfo>& renewals, AnalyticPluggable& analytics) const;
    void reportValidated(const Categories& prepared, const std::string& productID,
                         const std::optional<EventParameters>& params, AnalyticPluggable& analytics) const;
    // Both answer the product's own name for what happened.
    static std::string recordFirstTransaction(const PurchaseDecision& decision, AnalyticPluggable& analytics);
    static std::string recordConsecutiveTransaction(const PurchaseDecision& decision,
                                                    AnalyticPluggable& analytics);

    // What a new subscription replaces in them goes on.
    rx::DisposableSlot disposable_;
    rx::DisposableSlot gracePeriodDisposable_;
    rx::DisposableSlot validationDisposable_;
    const std::shared_ptr<NSUserDefaults> userDefaults_;
};

} // namespace corvantile
