#include "CorvantileLocalStore/detail/Ports/QueuedTransactions.hpp"

#include "CorvantileLocalStore/Engine/detail/StoreFailures.hpp"

#include <algorithm>
#include <exception>
#include <set>
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
    for (const auto& record : news.removed)
        if (auto gone = remove(record.number)) difference.removed.push_back(std::move(gone));
    if (!news.isAll) return difference;
    std::set<std::int64_t> left;
    for (const auto& record : news.updated) left.insert(record.number);
    std::vector<std::int64_t> finished;
    for (const auto& [number, entry] : entries_)
        if (!isUnwritten(number) && !left.contains(number)) finished.push_back(number);
    for (const auto number : finished) difference.removed.push_back(remove(number));
    return difference;
}

void QueuedTransactions::update(const StoreTransaction& record, Difference& difference) {
    auto& entry = entries_[record.number];
    if (entry.transaction && entry.record == record) return;
    numbers_.erase(entry.transaction.get());
    entry = {record, transactionOf(record)};
    numbers_.emplace(entry.transaction.get(), record.number);
    difference.updated.push_back(entry.transaction);
}

std::shared_ptr<SKPaymentTransaction> QueuedTransactions::addUnwritten(SKPaymentTransaction::Facts facts) {
    auto transaction = std::make_shared<SKPaymentTransaction>(std::move(facts));
    const auto number = nextUnwritten_++;
    numbers_.emplace(transaction.get(), number);
    entries_.emplace(number, Entry{{}, transaction});
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

std::vector<std::int64_t> QueuedTransactions::purchasing() const {
    std::vector<std::int64_t> numbers;
    for (const auto& [number, entry] : entries_)
        if (entry.record.state == SKPaymentTransactionState::purchasing && !isUnwritten(number))
            numbers.push_back(number);
    return numbers;
}

} // namespace corvantile
