#include "CorvantileLocalStore/Engine/detail/RecordCoding.hpp"

#include "CorvantileLocalStore/Engine/detail/FieldCoding.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"

namespace corvantile {

namespace {

using fieldcoding::Object;
using fieldcoding::Reader;
using fieldcoding::Writer;

template <class Visitor, class Record>
void visitPurchase(Visitor& visit, Record& record) {
    visit("identifier", record.identifier);
    visit("originalIdentifier", record.originalIdentifier);
    visit("lineItemIdentifier", record.lineItemIdentifier);
    visit("productIdentifier", record.productIdentifier);
    visit("groupIdentifier", record.groupIdentifier);
    visit("kind", record.kind);
    visit("quantity", record.quantity);
    visit("price", record.price);
    visit("date", record.date);
    visit("originalDate", record.originalDate);
    visit("expirationDate", record.expirationDate);
    visit("isTrial", record.isTrial);
    visit("isIntroductory", record.isIntroductory);
    visit("isFinished", record.isFinished);
    visit("refundDate", record.refundDate);
    visit("isRefundedForIssue", record.isRefundedForIssue);
}

template <class Visitor, class Record>
void visitTransaction(Visitor& visit, Record& record) {
    visit("number", record.number);
    visit("productIdentifier", record.productIdentifier);
    visit("quantity", record.quantity);
    visit("state", record.state);
    visit("identifier", record.identifier);
    visit("originalIdentifier", record.originalIdentifier);
    visit("date", record.date);
    visit("failure", record.failure);
}

template <class Visitor, class Record>
void visitSubscription(Visitor& visit, Record& record) {
    visit("groupIdentifier", record.groupIdentifier);
    visit("productIdentifier", record.productIdentifier);
    visit("originalIdentifier", record.originalIdentifier);
    visit("originalDate", record.originalDate);
    visit("purchaseIdentifier", record.purchaseIdentifier);
    visit("status", record.status);
    visit("renews", record.renews);
    visit("hasUsedOffer", record.hasUsedOffer);
    visit("offerPeriodsLeft", record.offerPeriodsLeft);
    visit("isInOffer", record.isInOffer);
    visit("anchor", record.anchor);
    visit("periodsPassed", record.periodsPassed);
    visit("expirationDate", record.expirationDate);
    visit("gracePeriodEnd", record.gracePeriodEnd);
    visit("expirationIntent", record.expirationIntent);
}

template <class Visitor, class Record>
void visitSettings(Visitor& visit, Record& record) {
    visit("nextNumber", record.nextNumber);
    visit("nextIdentifier", record.nextIdentifier);
    visit("failingBilling", record.failingBilling);
    visit("promotions", record.promotions);
    visit("failingRequests", record.failingRequests);
    visit("requestFailure", record.requestFailure);
    visit("isOffline", record.isOffline);
}

template <class Visitor, class Record>
void visitClock(Visitor& visit, Record& record) {
    visit("device", record.device);
    visit("store", record.store);
    visit("rate", record.rate);
    visit("seen", record.seen);
}

template <class Visitor, class Record>
void visitNextPayment(Visitor& visit, Record& record) {
    visit("decision", record.decision);
    visit("failure", record.failure);
}

template <class Record>
void visitPayments(Writer& visit, Record& record) {
    auto payments = Object::object();
    for (const auto& [product, next] : record.nextPayments) {
        Writer writer;
        visitNextPayment(writer, next);
        payments[product] = writer.object();
    }
    visit("nextPayments", payments);
}

void visitPayments(const Reader& visit, StoreSettings& record) {
    Object payments;
    visit("nextPayments", payments);
    for (const auto& [product, next] : payments.items()) {
        Reader reader(next);
        visitNextPayment(reader, record.nextPayments[product]);
    }
}

template <class Visit, class Record>
std::string written(Visit visit, const Record& record) {
    Writer writer;
    visit(writer, record);
    return writer.text();
}

template <class Record, class Visit>
std::optional<Record> read(std::string_view text, Visit visit) {
    const auto object = parseJSON<Object>(text);
    if (!object.is_object()) return std::nullopt;
    try {
        Record record;
        Reader reader(object);
        visit(reader, record);
        return record;
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

constexpr auto purchaseFields = [](auto& visit, auto& record) { visitPurchase(visit, record); };
constexpr auto transactionFields = [](auto& visit, auto& record) { visitTransaction(visit, record); };
constexpr auto subscriptionFields = [](auto& visit, auto& record) { visitSubscription(visit, record); };
constexpr auto clockFields = [](auto& visit, auto& record) { visitClock(visit, record); };
constexpr auto settingsFields = [](auto& visit, auto& record) {
    visitSettings(visit, record);
    visitPayments(visit, record);
};

} // namespace

std::string text(const StorePurchase& purchase) { return written(purchaseFields, purchase); }
std::string text(const StoreTransaction& transaction) { return written(transactionFields, transaction); }
std::string text(const StoreSubscription& subscription) { return written(subscriptionFields, subscription); }
std::string text(const StoreSettings& settings) { return written(settingsFields, settings); }
std::string text(const StoreClockSetting& clock) { return written(clockFields, clock); }

template <>
std::optional<StorePurchase> recordFromText(std::string_view text) {
    return read<StorePurchase>(text, purchaseFields);
}
template <>
std::optional<StoreTransaction> recordFromText(std::string_view text) {
    return read<StoreTransaction>(text, transactionFields);
}
template <>
std::optional<StoreSubscription> recordFromText(std::string_view text) {
    return read<StoreSubscription>(text, subscriptionFields);
}
template <>
std::optional<StoreSettings> recordFromText(std::string_view text) {
    return read<StoreSettings>(text, settingsFields);
}
template <>
std::optional<StoreClockSetting> recordFromText(std::string_view text) {
    return read<StoreClockSetting>(text, clockFields);
}

} // namespace corvantile
