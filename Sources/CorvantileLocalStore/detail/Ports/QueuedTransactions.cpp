#include "CorvantileLocalStore/detail/Ports/QueuedTransactions.hpp"

#include "CorvantileLocalStore/Engine/detail/StoreFailures.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace corvantile {

namespace {

std::shared_ptr<SKPaymentTransaction> transactionOf(const StoreTransaction& record) {
    SKPaymentTransaction::Facts facts{
        .payment = std::make_shared<SKPayment>(record.productIdentifier, record.quantity),
        .state = record.state,
        .identifier = record.identifier,
        .date = record.date,
        .originalIdentifier = record.originalIdentifier};
    if (record.failure) facts.error = std::make_exception_ptr(storeError(*record.failure));
    return std::make_shared<SKPaymentTransaction>(std::move(facts));
}

} // namespace

QueuedTransactions::Difference QueuedTransactions::take(const LocalStore::News& news) {
    Difference difference;
    for (const auto& record : news.updated) update(record, difference);
    for (const auto number : news.claimed) entries_.at(number).isOurs = true;
    for (const auto& record : news.removed) difference.removedNumbers.insert(record.number);
    if (news.isAll) {
        Numbers left;
        for (const auto& record : news.updated) left.insert(record.number);
        for (const auto& [number, entry] : entries_)
            if (!isUnwritten(number) && !left.contains(number)) difference.removedNumbers.insert(number);
    }
    for (const auto number : difference.removedNumbers)
        if (auto gone = remove(number)) difference.removed.push_back(std::move(gone));
    return difference;
}

void QueuedTransactions::update(const StoreTransaction& record, Difference& difference) {
    auto& entry = entries_[record.number];
    if (entry.transaction && entry.record == record) return;
    numbers_.erase(entry.transaction.get());
    entry = {record, transactionOf(record), entry.isOurs};
    numbers_.emplace(entry.transaction.get(), record.number);
    difference.updated.insert(record.number);
}

std::shared_ptr<SKPaymentTransaction> QueuedTransactions::addUnwritten(SKPaymentTransaction::Facts facts) {
    auto transaction = std::make_shared<SKPaymentTransaction>(std::move(facts));
    const auto number = nextUnwritten_++;
    numbers_.emplace(transaction.get(), number);
    entries_.emplace(number, Entry{.record = {}, .transaction = transaction, .isOurs = true});
    return transaction;
}

QueuedTransactions::Transactions QueuedTransactions::all() const {
    Transactions all;
    all.reserve(entries_.size());
    for (const auto& [number, entry] : entries_) all.push_back(entry.transaction);
    return all;
}

std::optional<std::int64_t> QueuedTransactions::number(const SKPaymentTransaction& transaction) const {
    if (const auto found = numbers_.find(&transaction); found != numbers_.end()) return found->second;
    // An object of an earlier launch, or of an earlier delivery.
    const auto& identifier = transaction.transactionIdentifier();
    const auto same = std::find_if(entries_.begin(), entries_.end(), [&](const auto& entry) {
        return identifier && entry.second.record.identifier == identifier;
    });
    if (same == entries_.end()) return std::nullopt;
    return same->first;
}

std::shared_ptr<SKPaymentTransaction> QueuedTransactions::remove(std::int64_t number) {
    const auto found = entries_.find(number);
    if (found == entries_.end()) return nullptr;
    auto transaction = std::move(found->second.transaction);
    numbers_.erase(transaction.get());
    entries_.erase(found);
    return transaction;
}

QueuedTransactions::Numbers QueuedTransactions::claimAll(const Claim& claim) {
    Numbers fresh;
    for (auto& [number, entry] : entries_) {
        if (entry.isOurs || !claim(number)) continue;
        entry.isOurs = true;
        fresh.insert(number);
    }
    return fresh;
}

QueuedTransactions::Transactions QueuedTransactions::ours() const {
    Transactions found;
    for (const auto& [number, entry] : entries_)
        if (entry.isOurs) found.push_back(entry.transaction);
    return found;
}

QueuedTransactions::Transactions QueuedTransactions::ours(const Numbers& numbers) const {
    Transactions found;
    for (const auto number : numbers)
        if (const auto& entry = entries_.at(number); entry.isOurs) found.push_back(entry.transaction);
    return found;
}

bool QueuedTransactions::areAllOurs() const {
    return std::all_of(entries_.begin(), entries_.end(),
                       [](const auto& entry) { return entry.second.isOurs; });
}

void QueuedTransactions::noteDelivered(const Transactions& transactions) {
    for (const auto& transaction : transactions)
        if (const auto found = numbers_.find(transaction.get()); found != numbers_.end())
            entries_.at(found->second).isDelivered = true;
}

std::set<std::string> QueuedTransactions::undelivered() const {
    std::set<std::string> identifiers;
    for (const auto& [number, entry] : entries_)
        if (!entry.isDelivered && entry.record.identifier) identifiers.insert(*entry.record.identifier);
    return identifiers;
}

QueuedTransactions::Numbers QueuedTransactions::purchasing(const Numbers& numbers) const {
    Numbers found;
    for (const auto number : numbers)
        if (!isUnwritten(number) && entries_.at(number).record.state == SKPaymentTransactionState::purchasing)
            found.insert(number);
    return found;
}

} // namespace corvantile
