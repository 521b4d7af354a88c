#include "CorvantileLocalStore/Engine/detail/StoreLedger.hpp"

#include "CorvantileLocalStore/Engine/detail/RecordCoding.hpp"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <utility>

namespace corvantile {

namespace {

constexpr std::string_view purchaseKey = "purchase/";
constexpr std::string_view transactionKey = "transaction/";
constexpr std::string_view subscriptionKey = "subscription/";
constexpr std::string_view settingsKey = "settings";
constexpr std::string_view clockKey = "clock";

std::string keyed(std::string_view kind, std::string_view name) { return std::string(kind).append(name); }

// Of one length, so that keys sort as numbers do.
std::string nameOf(std::int64_t number) {
    char text[24];
    const int length = std::snprintf(text, sizeof text, "%012lld", static_cast<long long>(number));
    return {text, static_cast<std::size_t>(length)};
}

std::int64_t numberAtEnd(std::string_view text) {
    std::int64_t number = 0;
    const auto digits = text.find_last_not_of("0123456789") + 1; // npos + 1 is 0
    std::from_chars(text.data() + digits, text.data() + text.size(), number);
    return number;
}

// False where the record cannot be read, or `store` refuses it.
template <class Record, class Take>
bool take(std::string_view text, Take store) {
    auto record = recordFromText<Record>(text);
    return record && store(std::move(*record));
}

} // namespace

StoreLedger::StoreLedger(const StoreStorage::Rows& rows, std::vector<std::string>& unreadable) {
    if (const auto found = rows.find(settingsKey); found != rows.end()) {
        auto read = recordFromText<StoreSettings>(found->second);
        if (!read) unreadable.push_back(found->first);
        hasCounters_ = read.has_value();
        settings_ = std::move(read).value_or(StoreSettings());
    }
    for (const auto& [key, text] : rows) {
        if (key == settingsKey) continue;
        if (!readRow(key, text)) unreadable.push_back(key);
        // Should the counters be unreadable, or older than what they have counted.
        if (key.starts_with(transactionKey))
            settings_.nextNumber = std::max(settings_.nextNumber, numberAtEnd(key) + 1);
        if (key.starts_with(purchaseKey))
            settings_.nextIdentifier = std::max(settings_.nextIdentifier, numberAtEnd(key) + 1);
    }
    for (const auto& [number, transaction] : transactions_)
        settings_.nextIdentifier =
            std::max(settings_.nextIdentifier, numberAtEnd(transaction.identifier.value_or("")) + 1);
}

// A record under another's key is one of which a byte has changed. Rows of a kind that is not known are left
// alone.
bool StoreLedger::readRow(const std::string& key, const std::string& text) {
    if (key == clockKey)
        return take<StoreClockSetting>(text, [&](auto record) { return clock_ = record, true; });
    if (key.starts_with(purchaseKey))
        return take<StorePurchase>(text, [&](auto record) {
            auto name = record.identifier;
            if (key != keyed(purchaseKey, name)) return false;
            if (record.refundDate) ++refunds_;
            purchases_.emplace_hint(purchases_.end(), std::move(name), std::move(record));
            return true;
        });
    if (key.starts_with(transactionKey))
        return take<StoreTransaction>(text, [&](auto record) {
            const auto number = record.number;
            if (key != keyed(transactionKey, nameOf(number))) return false;
            transactions_.emplace(number, std::move(record));
            return true;
        });
    if (key.starts_with(subscriptionKey))
        return take<StoreSubscription>(text, [&](auto record) {
            auto name = record.groupIdentifier;
            if (key != keyed(subscriptionKey, name)) return false;
            subscriptions_.emplace(std::move(name), std::move(record));
            return true;
        });
    return false;
}

StoreStorage::Counters StoreLedger::counters() const {
    return {.number = settings_.nextNumber, .identifier = settings_.nextIdentifier};
}

void StoreLedger::raiseCounters(const StoreStorage::Counters& counters) {
    auto raised = settings_;
    raised.nextNumber = std::max(raised.nextNumber, counters.number);
    raised.nextIdentifier = std::max(raised.nextIdentifier, counters.identifier);
    put(std::move(raised));
}

const StorePurchase* StoreLedger::purchase(std::string_view identifier) const {
    const auto found = purchases_.find(identifier);
    return found == purchases_.end() ? nullptr : &found->second;
}

const StoreTransaction* StoreLedger::transaction(std::int64_t number) const {
    const auto found = transactions_.find(number);
    return found == transactions_.end() ? nullptr : &found->second;
}

void StoreLedger::put(StorePurchase purchase) {
    changedPurchases_.insert(purchase.identifier);
    auto& place = purchases_[purchase.identifier];
    if (purchase.refundDate && !place.refundDate) ++refunds_; // nobody takes a refund back
    place = std::move(purchase);
}

void StoreLedger::put(StoreTransaction transaction) {
    changedTransactions_.insert(transaction.number);
    const auto number = transaction.number;
    transactions_.insert_or_assign(number, std::move(transaction));
}

void StoreLedger::put(StoreSubscription subscription) {
    changedSubscriptions_.insert(subscription.groupIdentifier);
    auto name = subscription.groupIdentifier;
    subscriptions_.insert_or_assign(std::move(name), std::move(subscription));
}

void StoreLedger::put(StoreSettings settings) {
    if (settings == settings_) return;
    settings_ = std::move(settings);
    haveSettingsChanged_ = true;
}

void StoreLedger::put(StoreClockSetting clock) {
    if (clock_ == clock) return;
    clock_ = clock;
    hasClockChanged_ = true;
}

void StoreLedger::removeTransaction(std::int64_t number) {
    const auto found = transactions_.find(number);
    if (found == transactions_.end()) return;
    changedTransactions_.insert(number);
    removedTransactions_.push_back(std::move(found->second));
    transactions_.erase(found);
}

std::string StoreLedger::makeIdentifier() {
    haveSettingsChanged_ = true;
    return std::to_string(settings_.nextIdentifier++);
}

std::int64_t StoreLedger::makeNumber() {
    haveSettingsChanged_ = true;
    return settings_.nextNumber++;
}

bool StoreLedger::hasChanges() const {
    return !changedPurchases_.empty() || !changedTransactions_.empty() || !changedSubscriptions_.empty() ||
           haveSettingsChanged_ || hasClockChanged_;
}

StoreLedger::Changes StoreLedger::takeChanges() {
    Changes changes;
    changes.hasNewPurchases = !changedPurchases_.empty() || !changedSubscriptions_.empty();
    for (const auto& name : std::exchange(changedPurchases_, {}))
        changes.rows.emplace(keyed(purchaseKey, name), text(purchases_.at(name)));
    for (const auto& name : std::exchange(changedSubscriptions_, {}))
        changes.rows.emplace(keyed(subscriptionKey, name), text(subscriptions_.at(name)));
    for (const auto number : std::exchange(changedTransactions_, {})) {
        const auto* const left = transaction(number);
        changes.rows.emplace(keyed(transactionKey, nameOf(number)),
                             left ? std::optional(text(*left)) : std::nullopt);
        if (left) changes.updated.push_back(*left);
    }
    changes.removed = std::exchange(removedTransactions_, {});
    if (std::exchange(haveSettingsChanged_, false)) changes.rows.emplace(settingsKey, text(settings_));
    if (std::exchange(hasClockChanged_, false)) changes.rows.emplace(clockKey, text(*clock_));
    return changes;
}

} // namespace corvantile
