#include "Corvantile/Plugin/Analytic/detail/PurchaseDecision.hpp"

#include "CorvantileIAP/ReceiptInfo.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace corvantile {

namespace {

PurchaseKind firstKind(const ReceiptInfo& record) {
    if (record.isTrial) return PurchaseKind::trial;
    return record.expiresDate == DecodingDefaults::invalidDate ? PurchaseKind::oneTimePurchase
                                                               : PurchaseKind::subscription;
}

PurchaseKind laterKind(const std::vector<ReceiptInfo>& records, std::size_t position, Date now) {
    const auto& expiresDate = records[position].expiresDate;
    if (!expiresDate || !(*expiresDate > now)) return PurchaseKind::expired;
    return position == 1 && records[0].isTrial ? PurchaseKind::trialConversion : PurchaseKind::renewal;
}

std::string_view namePrefix(PurchaseKind kind) {
    switch (kind) {
    case PurchaseKind::trial: return "trial_subscribe_";
    case PurchaseKind::subscription:
    case PurchaseKind::oneTimePurchase: return "subscribe_";
    case PurchaseKind::trialConversion: return "trial_conversion_";
    case PurchaseKind::renewal: return "renew_";
    case PurchaseKind::expired: break;
    }
    return {};
}

} // namespace

std::optional<DefaultEvent> PurchaseDecision::event() const {
    switch (kind) {
    case PurchaseKind::trial: return DefaultEvent::trialSubscribe(productID, value, currency);
    case PurchaseKind::subscription:
    case PurchaseKind::oneTimePurchase: return DefaultEvent::subscribe(productID, value, currency);
    case PurchaseKind::trialConversion: return DefaultEvent::trialConversion(productID, value, currency);
    case PurchaseKind::renewal: return DefaultEvent::renewSubscribe(productID, value, currency);
    case PurchaseKind::expired: break;
    }
    return std::nullopt;
}

bool PurchaseDecision::sendsRevenue() const { return kind == PurchaseKind::oneTimePurchase; }

bool PurchaseDecision::reportsSubscription() const {
    return kind == PurchaseKind::trial || kind == PurchaseKind::subscription ||
           kind == PurchaseKind::trialConversion;
}

bool PurchaseDecision::countsIntoTotal() const {
    return kind == PurchaseKind::trial || kind == PurchaseKind::subscription ||
           kind == PurchaseKind::oneTimePurchase;
}

std::vector<ProductCategory> preparePurchases(const std::vector<ProductCategory>& categories,
                                              Date firstDate) {
    std::vector<ProductCategory> prepared;
    prepared.reserve(categories.size());
    for (const auto& category : categories) {
        if (!category.product) continue;
        auto& copy = prepared.emplace_back();
        copy.identifier = category.identifier;
        copy.product = category.product;
        std::copy_if(category.receipts.begin(), category.receipts.end(), std::back_inserter(copy.receipts),
                     [&](const ReceiptInfo& record) { return record.purchaseDate >= firstDate; });
        std::sort(copy.receipts.begin(), copy.receipts.end());
        std::reverse(copy.receipts.begin(), copy.receipts.end());
    }
    return prepared;
}

PurchaseDecision decidePurchase(const ProductCategory& prepared, std::size_t position, Date now) {
    const auto& record = prepared.receipts[position];
    const auto& product = *prepared.product;
    PurchaseDecision decision;
    decision.kind = isFirstPurchase(record) ? firstKind(record) : laterKind(prepared.receipts, position, now);
    decision.productID = prepared.identifier.empty() ? product.productIdentifier() : prepared.identifier;
    decision.value = decision.kind == PurchaseKind::trial ? NSDecimalNumber() : product.price();
    decision.currency = product.priceLocale().currencyCode.value_or("");
    decision.region = product.priceLocale().regionCode;
    decision.transactionID = std::to_string(record.transactionID);
    decision.purchaseDate = record.purchaseDate;
    if (const auto prefix = namePrefix(decision.kind); !prefix.empty())
        decision.name = std::string(prefix) + product.productIdentifier();
    return decision;
}

} // namespace corvantile
