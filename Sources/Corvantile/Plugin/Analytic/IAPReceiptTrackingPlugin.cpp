#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Analytic/detail/PendingPurchases.hpp"
#include "Corvantile/Plugin/Analytic/detail/PurchaseDecision.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "Corvantile/RequireService.hpp"
#include "Corvantile/detail/DebuggedStream.hpp"
#include "CorvantileIAP/IAPReceiptPluggable.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantileReactive/CombineLatest.hpp"
#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"
#include "HostCore/HostCore.hpp"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <string_view>

namespace corvantile {

namespace {

Date now() { return Platform::current().ports().clock->now(); }

// A dictionary with a value of another kind is not a marker.
bool isMarked(const std::string& key) {
    const auto marker = Locksmith::loadDataForUserAccount(key);
    if (!marker) return false;
    const auto isBoolean = [](const auto& member) { return member.second.template as<bool>() != nullptr; };
    return std::all_of(marker->begin(), marker->end(), isBoolean);
}

// False when the keychain refuses, which goes to the host.
template <class Write>
bool isWritten(const Write& write) {
    try {
        write();
        return true;
    } catch (...) {
        if (const auto omit = HostCore::omitBlock()) omit(std::current_exception());
        return false;
    }
}

bool saveMarker(const std::string& key) {
    return isWritten([&] { Locksmith::saveData({{key, true}}, key); });
}

bool isPending(const std::string& key) {
    const auto entry = Locksmith::loadDataForUserAccount(key);
    return entry && PendingPurchases::isPending(*entry);
}

// Before a product's identifier: the key in the user defaults that marks its grace period as reported.
constexpr std::string_view gracePeriodMarker = "enter_grace_period_";

// True for the one caller that may report what the key stands for.
bool claim(const std::string& key) {
    if (isMarked(key)) return false;
    return Corvantile::dryRun() || saveMarker(key);
}

// Fixed texts that log searches rely on; the numbers are not source positions.
constexpr std::string_view recordsLabel = "IAPReceiptTrackingPlugin:122 (trackReceipts())";
constexpr std::string_view renewalsLabel = "IAPReceiptTrackingPlugin:164 (trackReceipts())";
constexpr std::string_view validationLabel =
    "IAPReceiptTrackingPlugin:59 (trackValidatedPurchase(productID:_:))";

// The categories with their records from the first date on, the first purchase first. An empty list counts
// only after one that was not.
rx::Observable<std::vector<ProductCategory>> preparedCategories(IAPReceiptPluggable& records,
                                                                FirstDatePluggable& install) {
    const auto purchases =
        records.productCategories().skipWhile([](const auto& categories) { return categories.empty(); });
    return rx::combineLatest(purchases, install.firstDate(), preparePurchases)
        .observeOn(rx::backgroundScheduler())
        .subscribeOn(rx::backgroundScheduler());
}

void trackSubscription(const PurchaseDecision& decision, AnalyticPluggable& analytics) {
    analytics.trackIAPSubs(decision.value, decision.currency, decision.transactionID, decision.purchaseDate,
                           decision.region);
}

// The stream has ended; the next activation, or call of the host, subscribes again.
constexpr auto ignoreError = [](const std::exception_ptr&) {};

} // namespace

IAPReceiptTrackingPluggable::~IAPReceiptTrackingPluggable() = default;

IAPReceiptTrackingPlugin::IAPReceiptTrackingPlugin() : IAPReceiptTrackingPlugin(Delivery::atMostOnce) {}

IAPReceiptTrackingPlugin::IAPReceiptTrackingPlugin(Delivery delivery)
    : userDefaults_(NSUserDefaults::standardUserDefaults()),
      pending_(delivery == Delivery::atLeastOnce ? std::make_unique<const PendingPurchases>(userDefaults_)
                                                 : nullptr) {}

IAPReceiptTrackingPlugin::~IAPReceiptTrackingPlugin() { disposable_.disposeAndClear(); }

void IAPReceiptTrackingPlugin::didBecomeActive(UIApplication&) {
    if (Corvantile::debug() && !Corvantile::dryRun()) return;
    trackReceipts();
}

void IAPReceiptTrackingPlugin::willResignActive(UIApplication&) { disposable_.disposeAndClear(); }

void IAPReceiptTrackingPlugin::trackReceipts() {
    const auto analytics = requireService<AnalyticPluggable>();
    const auto install = requireService<FirstDatePluggable>();
    const auto records = requireService<IAPReceiptPluggable>();
    sendLeftBehind(*analytics);
    const auto weak = weak_from_this();
    disposable_.exchange(debugged(preparedCategories(*records, *install), recordsLabel)
                             .subscribe(
                                 [weak, analytics](const Categories& prepared) {
                                     if (const auto self = weak.lock())
                                         self->reportRecords(prepared, *analytics);
                                 },
                                 ignoreError));
    gracePeriodDisposable_.exchange(debugged(records->renewals(), renewalsLabel)
                                        .subscribe(
                                            [weak, analytics](const std::vector<RenewalInfo>& renewals) {
                                                if (const auto self = weak.lock())
                                                    self->reportGracePeriods(renewals, *analytics);
                                            },
                                            ignoreError));
}

void IAPReceiptTrackingPlugin::trackValidatedPurchase(const std::string& productID,
                                                      const std::optional<EventParameters>& params) {
    const auto analytics = requireService<AnalyticPluggable>();
    const auto install = requireService<FirstDatePluggable>();
    const auto records = requireService<IAPReceiptPluggable>();
    validationDisposable_.exchange(
        debugged(preparedCategories(*records, *install), validationLabel)
            .subscribe(
                [weak = weak_from_this(), analytics, productID, params](const Categories& prepared) {
                    if (const auto self = weak.lock())
                        self->reportValidated(prepared, productID, params, *analytics);
                },
                ignoreError));
}

// The marker comes first, for a record that stays silent as well: what has expired by then is never reported.
void IAPReceiptTrackingPlugin::reportRecords(const Categories& prepared, AnalyticPluggable& analytics) const {
    for (const auto& category : prepared)
        for (std::size_t position = 0; position < category.receipts.size(); ++position) {
            const auto key = std::to_string(category.receipts[position].transactionID);
            const auto decide = [&] { return decidePurchase(category, position, now()); };
            if (!pending_ || Corvantile::dryRun()) {
                if (claim(key)) send(decide(), analytics);
            } else if (!isMarked(key) && !isPending(key)) {
                reportSafely(decide(), analytics);
            }
        }
}

// A record that stays silent has nothing to lose.
void IAPReceiptTrackingPlugin::reportSafely(const PurchaseDecision& decision,
                                            AnalyticPluggable& analytics) const {
    const auto& key = decision.transactionID;
    if (decision.kind == PurchaseKind::expired) return void(saveMarker(key));
    if (!isWritten([&] { pending_->save(decision); })) return;
    send(decision, analytics);
    isWritten([&] { pending_->settle(key); });
}

void IAPReceiptTrackingPlugin::sendLeftBehind(AnalyticPluggable& analytics) const {
    if (!pending_ || Corvantile::dryRun()) return;
    for (const auto& decision : pending_->takeLeftBehind()) {
        send(decision, analytics);
        isWritten([&] { pending_->settle(decision.transactionID); });
    }
}

void IAPReceiptTrackingPlugin::send(const PurchaseDecision& decision, AnalyticPluggable& analytics) {
    if (decision.countsIntoTotal())
        recordFirstTransaction(decision, analytics);
    else
        recordConsecutiveTransaction(decision, analytics);
}

std::string IAPReceiptTrackingPlugin::recordFirstTransaction(const PurchaseDecision& decision,
                                                             AnalyticPluggable& analytics) {
    const auto event = decision.event()->event();
    if (decision.sendsRevenue())
        analytics.track(event, decision.value, decision.currency);
    else
        analytics.track(event);
    if (decision.reportsSubscription()) trackSubscription(decision, analytics);
    analytics.track(DefaultEvent::totalSubscription(decision.value, decision.currency).event());
    return decision.name;
}

std::string IAPReceiptTrackingPlugin::recordConsecutiveTransaction(const PurchaseDecision& decision,
                                                                   AnalyticPluggable& analytics) {
    if (const auto event = decision.event()) analytics.track(event->event());
    if (decision.reportsSubscription()) trackSubscription(decision, analytics);
    return decision.name;
}

// Sent first, marked then: reported at least once. The marker is written in a dry run too.
void IAPReceiptTrackingPlugin::reportGracePeriods(const std::vector<RenewalInfo>& renewals,
                                                  AnalyticPluggable& analytics) const {
    for (const auto& renewal : renewals) {
        if (!renewal.gracePeriodExpiresDate || !(*renewal.gracePeriodExpiresDate > now())) continue;
        const auto key = std::string(gracePeriodMarker).append(renewal.productID);
        if (userDefaults_->boolForKey(key)) continue;
        analytics.track(DefaultEvent::gracePeriodEnter(renewal.productID).event());
        userDefaults_->setBool(true, key);
        userDefaults_->synchronize();
    }
}

bool IAPReceiptTrackingPlugin::claimValidated(const std::string& key) const {
    if (!pending_ || Corvantile::dryRun()) return claim(key);
    if (isMarked(key)) return false;
    return isPending(key) ? pending_->takeOver(key) : isWritten([&] { pending_->saveValidated(key); });
}

void IAPReceiptTrackingPlugin::reportValidated(const Categories& prepared, const std::string& productID,
                                               const std::optional<EventParameters>& params,
                                               AnalyticPluggable& analytics) const {
    const auto event = DefaultEvent::ostrelValidatedInAppPurchase().event();
    for (const auto& category : prepared) {
        if (category.product->productIdentifier() != productID) continue;
        const auto& records = category.receipts;
        const auto first = std::find_if(records.begin(), records.end(), isFirstPurchase);
        if (first == records.end()) continue;
        const auto key =
            std::string(PendingPurchases::validatedMarker).append(std::to_string(first->transactionID));
        if (!claimValidated(key)) continue;
        analytics.track(params ? AnalyticEvent(event.name, *params) : event);
        if (pending_ && !Corvantile::dryRun()) isWritten([&] { pending_->settle(key); });
    }
}

} // namespace corvantile
