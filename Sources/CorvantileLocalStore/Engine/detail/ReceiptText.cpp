#include "CorvantileLocalStore/Engine/detail/ReceiptText.hpp"

#include "CorvantileLocalStore/Engine/detail/PacificTime.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlatform/Foundation/detail/CalendarText.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace corvantile {

namespace {

using Object = nlohmann::ordered_json;
using std::chrono::seconds;

constexpr std::string_view wholeSeconds = "2020-11-08 16:00:57";

const char* flag(bool isSet) { return isSet ? "true" : "false"; }
const char* digit(bool isSet) { return isSet ? "1" : "0"; }

std::string inZone(Date date, seconds offset, const char* zone) {
    return timestamp(date, offset).substr(0, wholeSeconds.size()).append(" ").append(zone);
}

// Every date stands there in three forms.
class ReceiptWriter {
public:
    explicit ReceiptWriter(const std::set<std::string>& hidden) : hidden_(hidden) {}

    [[nodiscard]] bool isLeftOut(const StorePurchase& purchase) const {
        return purchase.kind == ProductKind::consumable &&
               (purchase.isFinished || hidden_.contains(purchase.identifier));
    }

    void put(Object& row, const std::string& key, Date date) {
        const auto milliseconds = std::llround(date.secondsSinceUnixEpoch() * 1000.0);
        row[key] = inZone(date, seconds(0), "Etc/GMT");
        row[key + "_ms"] = std::to_string(milliseconds);
        row[key + "_pst"] = inZone(date, pacific_.offset(date), "America/Los_Angeles");
    }

    [[nodiscard]] Object inApp(const StorePurchase& purchase) {
        Object row{{"quantity", std::to_string(purchase.quantity)},
                   {"product_id", purchase.productIdentifier},
                   {"transaction_id", purchase.identifier},
                   {"original_transaction_id", purchase.originalIdentifier}};
        put(row, "purchase_date", purchase.date);
        put(row, "original_purchase_date", purchase.originalDate);
        if (purchase.expirationDate) put(row, "expires_date", *purchase.expirationDate);
        if (!purchase.lineItemIdentifier.empty()) row["web_order_line_item_id"] = purchase.lineItemIdentifier;
        row["is_trial_period"] = flag(purchase.isTrial);
        if (purchase.expirationDate) row["is_in_intro_offer_period"] = flag(purchase.isIntroductory);
        if (purchase.refundDate) {
            put(row, "cancellation_date", *purchase.refundDate);
            row["cancellation_reason"] = digit(purchase.isRefundedForIssue);
        }
        row["in_app_ownership_type"] = "PURCHASED";
        return row;
    }

    [[nodiscard]] Object latest(const StorePurchase& purchase) {
        auto row = inApp(purchase);
        if (!purchase.groupIdentifier.empty())
            row["subscription_group_identifier"] = purchase.groupIdentifier;
        return row;
    }

    [[nodiscard]] Object renewal(const StoreSubscription& subscription) {
        Object row{{"auto_renew_product_id", subscription.productIdentifier},
                   {"product_id", subscription.productIdentifier},
                   {"original_transaction_id", subscription.originalIdentifier},
                   {"auto_renew_status", digit(subscription.renews)}};
        if (subscription.status == SubscriptionStatus::active) return row;
        const bool isTried = subscription.status == SubscriptionStatus::gracePeriod ||
                             subscription.status == SubscriptionStatus::billingRetry;
        row["is_in_billing_retry_period"] = digit(isTried);
        if (const auto intent = subscription.expirationIntent)
            row["expiration_intent"] = std::to_string(static_cast<int>(*intent));
        if (subscription.gracePeriodEnd) put(row, "grace_period_expires_date", *subscription.gracePeriodEnd);
        return row;
    }

    [[nodiscard]] Object appReceipt(const StoreLedger& ledger, const std::string& bundleIdentifier,
                                    Date now) {
        Object receipt{{"receipt_type", "ProductionSandbox"},
                       {"adam_id", 0},
                       {"app_item_id", 0},
                       {"bundle_id", bundleIdentifier},
                       {"application_version", "1"},
                       {"download_id", 0},
                       {"version_external_identifier", 0},
                       {"original_application_version", "1.0"}};
        put(receipt, "receipt_creation_date", now);
        put(receipt, "request_date", now);
        put(receipt, "original_purchase_date", ledger.purchases().begin()->second.date);
        auto& rows = receipt["in_app"] = Object::array();
        for (const auto& [identifier, purchase] : ledger.purchases())
            if (!isLeftOut(purchase)) rows.push_back(inApp(purchase));
        return receipt;
    }

private:
    const std::set<std::string>& hidden_;
    PacificTime pacific_;
};

} // namespace

std::optional<std::string> receiptJSON(const StoreLedger& ledger, const std::string& bundleIdentifier,
                                       Date now, const std::set<std::string>& hidden) {
    const auto& purchases = ledger.purchases();
    if (purchases.empty()) return std::nullopt;
    ReceiptWriter writer(hidden);
    Object answer{{"status", 0},
                  {"environment", "Sandbox"},
                  {"receipt", writer.appReceipt(ledger, bundleIdentifier, now)}};
    auto& latest = answer["latest_receipt_info"] = Object::array();
    std::for_each(purchases.rbegin(), purchases.rend(), [&](const auto& entry) {
        if (!writer.isLeftOut(entry.second)) latest.push_back(writer.latest(entry.second));
    });
    answer["latest_receipt"] = base64(receiptBytes(ledger, bundleIdentifier));
    auto& renewals = answer["pending_renewal_info"] = Object::array();
    for (const auto& [group, subscription] : ledger.subscriptions())
        renewals.push_back(writer.renewal(subscription));
    return answer.dump(-1, ' ', false, Object::error_handler_t::replace);
}

std::string receiptBytes(const StoreLedger& ledger, const std::string& bundleIdentifier) {
    const auto& purchases = ledger.purchases();
    if (purchases.empty()) return {};
    return "CVRC1\n" + bundleIdentifier + "\n" + purchases.rbegin()->first + "\n" +
           std::to_string(purchases.size()) + "\n" + std::to_string(ledger.refunds()) + "\n";
}

} // namespace corvantile
