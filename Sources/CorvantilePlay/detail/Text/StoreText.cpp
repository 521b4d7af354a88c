#include "CorvantilePlay/detail/Text/StoreText.hpp"

#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>

namespace corvantile::tool {

namespace {

constexpr struct {
    std::string_view name;
    SKErrorCode code;
} failures[] = {
    {"cancelled", SKErrorCode::paymentCancelled},
    {"not-allowed", SKErrorCode::paymentNotAllowed},
    {"not-available", SKErrorCode::storeProductNotAvailable},
    {"invalid", SKErrorCode::paymentInvalid},
    {"network", SKErrorCode::cloudServiceNetworkConnectionFailed},
    {"unknown", SKErrorCode::unknown},
};

std::string pieces(int quantity) { return quantity == 1 ? "" : " x " + std::to_string(quantity); }

} // namespace

std::string_view labelOf(SKPaymentTransactionState state) {
    switch (state) {
    case SKPaymentTransactionState::purchasing: return "purchasing";
    case SKPaymentTransactionState::purchased: return "purchased";
    case SKPaymentTransactionState::failed: return "failed";
    case SKPaymentTransactionState::restored: return "restored";
    case SKPaymentTransactionState::deferred: return "deferred";
    }
    return "in a state without a name";
}

std::chrono::duration<double> parseStoreDuration(std::string_view text) {
    static constexpr struct {
        std::string_view name;
        double seconds;
    } units[] = {{"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86400}, {"w", 7 * 86400}, {"y", 365 * 86400}};
    const auto numberEnd = std::min(text.find_first_not_of("0123456789."), text.size());
    const auto amount = NSDecimalNumber::fromText(text.substr(0, numberEnd));
    for (const auto& unit : units)
        if (amount && text.substr(numberEnd) == unit.name)
            return std::chrono::duration<double>(amount->doubleValue() * unit.seconds);
    throw unexpectedValue("a duration, such as 31d, 2h, 1w or 1y", text);
}

SKErrorCode parseFailure(const std::string& text) {
    Names names;
    for (const auto& failure : failures) {
        if (failure.name == text) return failure.code;
        names.emplace_back(failure.name);
    }
    throw UsageError(unknownName("reason", text, names));
}

std::string productNamed(const Catalogue& catalogue, const std::string& text) {
    if (catalogue.product(text) != nullptr) return text;
    Names names, ending;
    for (const auto& product : catalogue.products()) {
        names.push_back(product.identifier);
        if (product.identifier.ends_with("." + text)) ending.push_back(product.identifier);
    }
    if (ending.size() == 1) return ending.front();
    if (ending.empty()) throw UsageError(unknownName("product", text, names));
    throw UsageError("there are several products \"" + text + "\": " + listed(ending));
}

std::string describe(const StoreSubscription& subscription) {
    const auto& name = subscription.productIdentifier;
    const auto end = corvantile::describe(subscription.expirationDate);
    switch (subscription.status) {
    case SubscriptionStatus::active: return name + (subscription.renews ? " renews at " : " ends at ") + end;
    case SubscriptionStatus::gracePeriod: return name + " is in its grace period, not paid since " + end;
    case SubscriptionStatus::billingRetry: return name + " is off while it is not paid, since " + end;
    case SubscriptionStatus::expired: return name + " has ended at " + end;
    case SubscriptionStatus::revoked: return name + " was refunded";
    }
    return name;
}

Cells cellsOf(const StorePurchase& purchase) {
    std::string what = purchase.isTrial ? "free" : purchase.isIntroductory ? "introductory" : "";
    if (purchase.refundDate) what = "refunded";
    if (!purchase.isFinished) what.append(what.empty() ? "" : ", ").append("not finished");
    return {purchase.identifier, corvantile::describe(purchase.date),
            purchase.productIdentifier + pieces(purchase.quantity),
            purchase.expirationDate ? "until " + corvantile::describe(*purchase.expirationDate) : "", what};
}

Cells cellsOf(const StoreTransaction& transaction) {
    auto what = std::string(labelOf(transaction.state));
    if (transaction.failure) what += ": " + transaction.failure->message;
    return {transaction.identifier.value_or("-"),
            transaction.date ? corvantile::describe(*transaction.date) : "",
            transaction.productIdentifier + pieces(transaction.quantity), "", what};
}

EventValue::Map fieldsOf(const StorePurchase& purchase) {
    EventValue::Map fields{{"transaction", purchase.identifier},
                           {"originalTransaction", purchase.originalIdentifier},
                           {"product", purchase.productIdentifier},
                           {"quantity", purchase.quantity},
                           {"price", purchase.price},
                           {"date", purchase.date},
                           {"isTrial", purchase.isTrial},
                           {"isFinished", purchase.isFinished}};
    if (purchase.expirationDate) fields.emplace("expires", *purchase.expirationDate);
    if (purchase.refundDate) fields.emplace("refunded", *purchase.refundDate);
    return fields;
}

EventValue::Map fieldsOf(const StoreTransaction& transaction) {
    EventValue::Map fields{{"product", transaction.productIdentifier},
                           {"quantity", transaction.quantity},
                           {"state", labelOf(transaction.state)}};
    if (transaction.identifier) fields.emplace("transaction", *transaction.identifier);
    if (transaction.failure) fields.emplace("error", transaction.failure->message);
    return fields;
}

} // namespace corvantile::tool
