#include "CorvantilePlay/detail/Receipts/PurchaseExplanation.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace corvantile::tool {

namespace {

const ReceiptProduct* find(const std::vector<ReceiptProduct>& products, const std::string& identifier) {
    const auto found = std::find_if(products.begin(), products.end(), [&](const ReceiptProduct& product) {
        return product.identifier == identifier;
    });
    return found == products.end() ? nullptr : &*found;
}

// Each transaction that counts, with what is decided about it.
std::map<std::int64_t, PurchaseDecision> decide(const std::vector<ProductCategory>& categories,
                                                const ExplanationContext& context) {
    std::map<std::int64_t, PurchaseDecision> decisions;
    for (const auto& prepared : preparePurchases(categories, context.firstDate))
        for (std::size_t position = 0; position < prepared.receipts.size(); ++position)
            decisions.emplace(prepared.receipts[position].transactionID,
                              decidePurchase(prepared, position, context.now));
    return decisions;
}

std::optional<Silence> silenceOf(const ExplainedPurchase& purchase, ExplanationContext& context) {
    const auto* const product = find(context.products, purchase.record.productID);
    if (product == nullptr) return context.ofOthers;
    if (!product->product) return Silence::notSold;
    if (!purchase.decision) return Silence::beforeFirstDate;
    if (!context.marked.insert(purchase.decision->transactionID).second) return Silence::marked;
    if (purchase.decision->kind == PurchaseKind::expired) return Silence::expired;
    return std::nullopt;
}

// A decision's name is of the product's own; the event is named by the category, if it has one.
std::string eventName(const ExplainedPurchase& purchase) {
    const auto& own = purchase.decision->name;
    return own.substr(0, own.size() - purchase.record.productID.size()) + purchase.decision->productID;
}

} // namespace

std::vector<ExplainedPurchase> explainReceipt(const StoreReceipt& receipt, ExplanationContext& context) {
    const auto sorted = categorize(receipt.transactions, context.products);
    auto decisions = decide(sorted.categories, context);
    auto records = receipt.transactions;
    std::sort(records.rbegin(), records.rend()); // the newest comes first otherwise
    std::vector<ExplainedPurchase> explained;
    explained.reserve(records.size());
    for (auto& record : records) {
        auto& purchase = explained.emplace_back();
        if (const auto found = decisions.find(record.transactionID); found != decisions.end())
            purchase.decision = std::move(found->second);
        purchase.record = std::move(record);
        purchase.silence = silenceOf(purchase, context);
        const auto* const known = find(context.products, purchase.record.productID);
        if (known != nullptr && known->product)
            purchase.currency = known->product->priceLocale().currencyCode.value_or("");
    }
    return explained;
}

std::vector<SentReport> ExplainedPurchase::sent() const {
    using Type = SentReport::Type;
    std::vector<SentReport> reports;
    if (silence || !decision) return reports;
    const auto add = [&](Type type, std::string event) {
        reports.push_back({type, std::move(event), decision->value, decision->currency});
    };
    add(decision->sendsRevenue() ? Type::revenue : Type::event, eventName(*this));
    if (decision->reportsSubscription()) add(Type::subscription, {});
    if (decision->countsIntoTotal()) add(Type::event, "total_subscription");
    return reports;
}

std::optional<NSDecimalNumber> ExplainedPurchase::revenue() const {
    if (silence || !decision) return std::nullopt;
    return decision->sendsRevenue() || decision->reportsSubscription() ? decision->value : NSDecimalNumber();
}

std::string_view describe(SentReport::Type type) {
    switch (type) {
    case SentReport::Type::event: return "event";
    case SentReport::Type::revenue: return "revenue";
    case SentReport::Type::subscription: return "subscription";
    }
    return {};
}

std::string describe(const SentReport& report) {
    const auto name = report.event.empty() ? std::string(describe(report.type)) : report.event;
    return name + " " + report.price.description() + " " + report.currency +
           (report.type == SentReport::Type::revenue ? " as revenue" : "");
}

std::string_view ruleOf(PurchaseKind kind) {
    switch (kind) {
    case PurchaseKind::trial: return "first purchase, a trial";
    case PurchaseKind::subscription: return "first purchase, paid";
    case PurchaseKind::oneTimePurchase: return "first purchase, does not expire";
    case PurchaseKind::trialConversion: return "second, after a trial";
    case PurchaseKind::renewal: return "later purchase";
    case PurchaseKind::expired: return "later purchase, over";
    }
    return {};
}

std::string_view describe(Silence silence) {
    switch (silence) {
    case Silence::marked: return "already marked";
    case Silence::beforeFirstDate: return "before the first date";
    case Silence::expired: return "expired";
    case Silence::notListed: return "no category: the IAPReceiptPlugin does not list the product";
    case Silence::notSold: return "no category: the catalogue has no such product";
    }
    return {};
}

} // namespace corvantile::tool
