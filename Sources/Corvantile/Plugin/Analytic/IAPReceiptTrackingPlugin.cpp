#include "Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Analytic/detail/PurchaseDecision.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "Corvantile/RequireService.hpp"
#include "Corvantile/detail/DebuggedStream.hpp"
#include "CorvantileIAP/IAPReceiptPluggable.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
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

// The marker counts only as a whole: a value of another kind in it, and it is not ours.
bool isMarked(const std::string& key) {
    const auto marker = Locksmith::loadDataForUserAccount(key);
    if (!marker) return false;
    const auto isBoolean = [](const auto& member) { return member.second.template as<bool>() != nullptr; };
    return std::all_of(marker->begin(), marker->end(), isBoolean);
}

bool saveMarker(const std::string& key) {
    try {
        Locksmith::saveData({{key, true}}, key);
        return true;
    } catch (const NSError&) {
        if (const auto omit = HostCore::omitBlock()) omit(std::current_exception());
        return false;
    }
}

// True for the one who may report what the key stands for.
bool claim(const std::string& key) {
    if (isMarked(key)) return false;
    return Corvantile::dryRun() || saveMarker(key);
}

constexpr std::string_view trackingPlugin = "Sources/Corvantile/Plugin/Analytic/IAPReceiptTrackingPlugin";

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

// The stream has ended; the next activation, or call of the host, begins another.
constexpr auto ignoreError = [](const std::exception_ptr&) {};

} // namespace

IAPReceiptTrackingPluggable::~IAPReceiptTrackingPluggable() = default;

IAPReceiptTrackingPlugin::IAPReceiptTrackingPlugin()
    : userDefaults_(NSUserDefaults::standardUserDefaults()) {}

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
    const auto weak = weak_from_this();
    disposable_.exchange(
        debugged(preparedCategories(*records, *install), trackingPlugin, 122, "trackReceipts()")
            .subscribe(
                [weak, analytics](const Categories& prepared) {
                    if (const auto self = weak.lock()) self->reportRecords(prepared, *analytics);
                },
                ignoreError));
    gracePeriodDisposable_.exchange(debugged(records->renewals(), trackingPlugin, 164, "trackReceipts()")
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
        debugged(preparedCategories(*records, *install), trackingPlugin, 59,
                 "trackValidatedPurchase(productID:_:)")
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
            const auto& record = category.receipts[position];
            if (!claim(std::to_string(record.transactionID))) continue;
            const auto decision = decidePurchase(category, position, now());
            if (isFirstPurchase(record))
                recordFirstTransaction(decision, analytics);
            else
                recordConsecutiveTransaction(decision, analytics);
        }
}

std::string IAPReceiptTrackingPlugin::recordFirstTransaction(const PurchaseDecision& decision,
                                                             AnalyticPluggable& analytics) {
    const auto event = decision.event()->event();
    if (decision.sendsRevenue())
        analytics.track(event, decision.value, decision.currency);
    else
        analytics.track(event);
    if (decision.reportsSubscription()) trackSubscription(decision, analytics);
    if (decision.countsIntoTotal())
        analytics.track(AnalyticEvent("total_subscription",
                                      {{"value", decision.value}, {"currency", decision.currency}}));
    return decision.name;
}

std::string IAPReceiptTrackingPlugin::recordConsecutiveTransaction(const PurchaseDecision& decision,
                                                                   AnalyticPluggable& analytics) {
    if (const auto event = decision.event()) analytics.track(event->event());
    if (decision.reportsSubscription()) trackSubscription(decision, analytics);
    return decision.name;
}

// Sent first, marked then: once at least. The marker is written in a dry run too.
void IAPReceiptTrackingPlugin::reportGracePeriods(const std::vector<RenewalInfo>& renewals,
                                                  AnalyticPluggable& analytics) const {
    for (const auto& renewal : renewals) {
        if (!renewal.gracePeriodExpiresDate || !(*renewal.gracePeriodExpiresDate > now())) continue;
        const auto key = "enter_grace_period_" + renewal.productID;
        if (userDefaults_->boolForKey(key)) continue;
        analytics.track(AnalyticEvent("enter_grace_period", {{"value", renewal.productID}}));
        userDefaults_->setBool(true, key);
        userDefaults_->synchronize();
    }
}

void IAPReceiptTrackingPlugin::reportValidated(const Categories& prepared, const std::string& productID,
                                               const std::optional<EventParameters>& params,
                                               AnalyticPluggable& analytics) const {
    constexpr const char* name = "ostrel_in_app_purchase";
    for (const auto& category : prepared) {
        if (category.product->productIdentifier() != productID) continue;
        const auto& records = category.receipts;
        const auto first = std::find_if(records.begin(), records.end(), isFirstPurchase);
        if (first == records.end() || !claim("validated_" + std::to_string(first->transactionID))) continue;
        analytics.track(params ? AnalyticEvent(name, *params) : AnalyticEvent(name));
    }
}

} // namespace corvantile
