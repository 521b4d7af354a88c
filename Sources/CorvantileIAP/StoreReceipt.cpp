#include "CorvantileIAP/StoreReceipt.hpp"

#include "CorvantileIAP/detail/ReceiptFields.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <utility>

namespace corvantile {

namespace {

constexpr int subscriptionExpired = 21006;

constexpr struct {
    int status;
    const char* text;
} knownStatuses[] = {
    {0, "The receipt is valid."},
    {21000, "The store could not read the request."},
    {21001, "The store answers no such request any more."},
    {21002, "The receipt's data is malformed, or the store could not read it for now."},
    {21003, "The receipt is not authentic."},
    {21004, "The shared secret is not the one of the account."},
    {21005, "The store's server could not be reached."},
    {subscriptionExpired, "The receipt is valid, but the subscription has expired."},
    {21007, "The receipt is from the test environment, and was sent to the production one."},
    {21008, "The receipt is from the production environment, and was sent to the test one."},
    {21009, "The store could not reach its data for now."},
    {21010, "The account was not found or is deleted: nothing was ever bought."},
};

using Json = nlohmann::json;

constexpr const char* leftOut = "missing, so the row is left out";

NSError receiptError(int code, std::string text) {
    return {receiptErrorDomain, code, {{NSError::localizedDescriptionKey, std::move(text)}}};
}

const Json* member(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() || found->is_null() ? nullptr : &*found;
}

const Json* objectMember(const Json& object, const char* key) {
    const auto* const found = member(object, key);
    return found != nullptr && found->is_object() ? found : nullptr;
}

class Reader {
public:
    explicit Reader(const Json& root) {
        const auto* const notified = objectMember(root, "unified_receipt");
        const auto& answer = notified == nullptr ? root : *notified;
        const auto* const bundle = objectMember(answer, "receipt");
        requireReceipt(answer, bundle);
        readAnswer(ReceiptFields(answer, "", 0, receipt_.problems));
        readTransactions(answer, "latest_receipt_info");
        if (bundle != nullptr) readTransactions(*bundle, "in_app");
        readTransactions(answer, "in_app");
        forEachRow(answer, "pending_renewal_info", [this](const ReceiptFields& row) {
            auto record = renewal(row);
            if (record.productID.empty())
                row.report("product_id", leftOut);
            else
                receipt_.renewals.push_back(std::move(record));
        });
    }

    [[nodiscard]] StoreReceipt take() { return std::move(receipt_); }

private:
    static void requireReceipt(const Json& answer, const Json* bundle) {
        const char* const signs[] = {"status", "latest_receipt_info", "in_app", "pending_renewal_info"};
        const auto isThere = [&](const char* key) { return member(answer, key) != nullptr; };
        if (bundle == nullptr && std::none_of(std::begin(signs), std::end(signs), isThere))
            throw receiptError(unreadableReceipt, "The text is JSON, but no receipt of the store.");
    }

    void readAnswer(const ReceiptFields& answer) {
        const int status = answer.smallInteger("status").value_or(0);
        if (!hasPurchases(status)) {
            const bool isRetryable = answer.boolean("is-retryable").value_or(false);
            throw receiptError(status,
                               receiptStatusText(status) + (isRetryable ? " It may succeed later." : ""));
        }
        if (status != 0) answer.report("status", receiptStatusText(status));
        receipt_.environment = answer.text("environment");
    }

    // `read` gets each row of a list; an object alone, as older receipts have it, is a list of one.
    template <class Read>
    void forEachRow(const Json& object, const char* list, Read read) {
        const auto* const rows = member(object, list);
        if (rows == nullptr) return;
        if (rows->is_object()) return read(ReceiptFields(*rows, list, 0, receipt_.problems));
        if (!rows->is_array())
            return receipt_.problems.push_back({list, "not a list: " + shownInProblem(*rows)});
        for (std::size_t number = 0; number < rows->size(); ++number) {
            const auto& row = (*rows)[number];
            const ReceiptFields fields(row, list, number, receipt_.problems);
            if (row.is_object())
                read(fields);
            else
                fields.report("", "not a row: " + shownInProblem(row));
        }
    }

    void readTransactions(const Json& object, const char* list) {
        forEachRow(object, list, [this](const ReceiptFields& row) {
            auto record = transaction(row);
            if (record && seen_.insert(record->transactionID).second)
                receipt_.transactions.push_back(std::move(*record));
        });
    }

    static std::optional<ReceiptInfo> transaction(const ReceiptFields& row) {
        const auto identifier = row.integer("transaction_id");
        auto product = row.text("product_id");
        if (!identifier || product.empty()) {
            row.report(identifier ? "product_id" : "transaction_id", leftOut);
            return std::nullopt;
        }
        ReceiptInfo record;
        record.transactionID = *identifier;
        record.productID = std::move(product);
        record.quantity = row.integer("quantity").value_or(1);
        record.webOrderLineItemID = row.integer("web_order_line_item_id");
        record.purchaseDate = required(row, "purchase_date");
        record.expiresDate = row.date("expires_date").value_or(DecodingDefaults::invalidDate);
        record.isTrial = row.boolean("is_trial_period").value_or(false);
        record.isInIntroOffer = row.boolean("is_in_intro_offer_period");
        record.originalTransactionID = original(row);
        record.originalPurchaseDate =
            row.date("original_purchase_date").value_or(DecodingDefaults::invalidDate);
        record.ownershipType = row.text("in_app_ownership_type");
        record.subscriptionGroupIdentifier = row.text("subscription_group_identifier");
        record.promotionalOfferID = row.text("promotional_offer_id");
        return record;
    }

    static Date required(const ReceiptFields& row, const char* key) {
        const auto date = row.date(key);
        if (!date) row.report(key, "missing");
        return date.value_or(DecodingDefaults::invalidDate);
    }

    // Without one a row is never taken for a first purchase, whose revenue counts.
    static std::int64_t original(const ReceiptFields& row) {
        const auto identifier = row.integer("original_transaction_id");
        if (!identifier) row.report("original_transaction_id", "missing");
        return identifier.value_or(0);
    }

    static RenewalInfo renewal(const ReceiptFields& row) {
        RenewalInfo record;
        record.productID = row.text("product_id");
        record.autoRenewProductID = row.text("auto_renew_product_id");
        record.originalTransactionID = row.integer("original_transaction_id");
        record.willAutoRenew = row.boolean("auto_renew_status");
        if (const auto intent = row.smallInteger("expiration_intent"))
            record.expirationIntent = static_cast<RenewalInfo::ExpirationIntent>(*intent);
        record.isInBillingRetryPeriod = row.boolean("is_in_billing_retry_period");
        record.gracePeriodExpiresDate = row.date("grace_period_expires_date");
        record.hasAcceptedPriceIncrease = row.boolean("price_consent_status");
        return record;
    }

    StoreReceipt receipt_;
    std::unordered_set<std::int64_t> seen_;
};

} // namespace

std::string receiptStatusText(int status) {
    for (const auto& known : knownStatuses)
        if (known.status == status) return known.text;
    if (status >= 21100 && status <= 21199) return "The store failed internally while it read the receipt.";
    return "The store refused the receipt for a reason of its own.";
}

bool hasPurchases(int status) { return status == 0 || status == subscriptionExpired; }

StoreReceipt readStoreReceipt(std::string_view json) {
    if (isTooDeepJSON(json)) throw receiptError(unreadableReceipt, "The receipt is nested too deeply.");
    const auto root = Json::parse(json, nullptr, false);
    if (!root.is_object())
        throw receiptError(unreadableReceipt, root.is_discarded() ? "The receipt is no JSON."
                                                                  : "The receipt is no JSON object.");
    return Reader(root).take();
}

} // namespace corvantile
