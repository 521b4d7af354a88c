#include "CorvantileIAP/ReceiptInfo.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"

#include <cmath>
#include <limits>
#include <tuple>

namespace corvantile {

namespace {

// Sorting needs a place for what is no number too.
double place(Date date) {
    const double seconds = date.secondsSinceReference;
    return std::isnan(seconds) ? -std::numeric_limits<double>::infinity() : seconds;
}

std::optional<double> place(std::optional<Date> date) {
    return date ? std::optional(place(*date)) : std::nullopt;
}

auto remainder(const ReceiptInfo& record) {
    return std::make_tuple(record.originalTransactionID, place(record.expiresDate), record.isTrial,
                           record.isInIntroOffer, record.quantity, record.webOrderLineItemID,
                           place(record.originalPurchaseDate));
}

auto texts(const ReceiptInfo& record) {
    return std::tie(record.productID, record.ownershipType, record.subscriptionGroupIdentifier,
                    record.promotionalOfferID);
}

} // namespace

std::string describe(const RenewalInfo& record) {
    const auto& grace = record.gracePeriodExpiresDate;
    return "RenewalInfo(productID: " + debugText(record.productID) +
           ", gracePeriodExpiresDate: " + (grace ? describe(*grace) : "nil") + ")";
}

bool operator<(const ReceiptInfo& left, const ReceiptInfo& right) {
    const double leftPlace = place(left.purchaseDate);
    const double rightPlace = place(right.purchaseDate);
    if (leftPlace != rightPlace) return leftPlace > rightPlace;
    if (left.transactionID != right.transactionID) return left.transactionID > right.transactionID;
    const auto leftRemainder = remainder(left);
    const auto rightRemainder = remainder(right);
    if (leftRemainder != rightRemainder) return leftRemainder < rightRemainder;
    return texts(left) < texts(right);
}

std::string describe(const ReceiptInfo& record) {
    return "ReceiptInfo(transactionID: " + std::to_string(record.transactionID) +
           ", productID: " + debugText(record.productID) +
           ", purchaseDate: " + describe(record.purchaseDate) +
           ", expiresDate: " + (record.expiresDate ? describe(*record.expiresDate) : "nil") +
           ", isTrial: " + (record.isTrial ? "true" : "false") +
           ", originalTransactionID: " + std::to_string(record.originalTransactionID) + ")";
}

} // namespace corvantile
