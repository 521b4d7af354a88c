#include "Tools/corvantile/Receipts/PurchaseExplanation.hpp"

#include "CorvantileIAP/ReceiptCatalogue.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace corvantile::tool {

namespace {

std::vector<ReceiptProduct> productsOf(const Catalogue& catalogue) {
    std::vector<ReceiptProduct> products;
    products.reserve(catalogue.products().size());
    for (const auto& product : catalogue.products())
        products.push_back({product.identifier, {}, makeProduct(catalogue, product)});
    return products;
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
    if (context.catalogue.product(purchase.record.productID) == nullptr) return Silence::noCategory;
    if (!purchase.decision) return Silence::beforeFirstDate;
    if (!context.marked.insert(purchase.decision->transactionID).second) return Silence::marked;
    if (purchase.decision->kind == PurchaseKind::expired) return Silence::expired;
    return std::nullopt;
}

} // namespace

std::vector<ExplainedPurchase> explainReceipt(const StoreReceipt& receipt, ExplanationContext& context) {
    const auto sorted = categorize(receipt.transactions, productsOf(context.catalogue));
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
        if (purchase.silence != Silence::noCategory)
            purchase.currency = context.catalogue.priceLocale.currencyCode.value_or("");
    }
    return explained;
}

std::vector<std::string> ExplainedPurchase::sent() const {
    std::vector<std::string> texts;
    if (silence || !decision) return texts;
    const auto amount = " " + decision->value.description() + " " + decision->currency;
    // A catalogue names no categories, so the product's own name is that of the event.
    texts.push_back(decision->name + amount + (decision->sendsRevenue() ? " as revenue" : ""));
    if (decision->reportsSubscription()) texts.push_back("subscription" + amount);
    if (decision->countsIntoTotal()) texts.push_back("total_subscription" + amount);
    return texts;
}

std::optional<NSDecimalNumber> ExplainedPurchase::revenue() const {
    if (silence || !decision) return std::nullopt;
    return decision->sendsRevenue() || decision->reportsSubscription() ? decision->value : NSDecimalNumber();
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
    case Silence::noCategory: return "no category: the catalogue has no such product";
    }
    return {};
}

} // namespace corvantile::tool
