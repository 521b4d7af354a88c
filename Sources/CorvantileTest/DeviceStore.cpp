#include "CorvantileTest/DeviceStore.hpp"

#include <utility>

namespace corvantile {

void DeviceStore::setProducts(Products products) {
    const std::lock_guard lock(mutex_);
    products_ = std::move(products);
}

DeviceStore::Products DeviceStore::products() const {
    const std::lock_guard lock(mutex_);
    return products_;
}

void DeviceStore::setReceipt(std::optional<std::string> receiptJSON) {
    const std::lock_guard lock(mutex_);
    receipt_ = std::move(receiptJSON);
}

std::optional<std::string> DeviceStore::receipt() const {
    const std::lock_guard lock(mutex_);
    return receipt_;
}

void DeviceStore::setRestorable(std::vector<std::string> productIdentifiers) {
    const std::lock_guard lock(mutex_);
    restorable_ = std::move(productIdentifiers);
}

std::vector<std::string> DeviceStore::restorable() const {
    const std::lock_guard lock(mutex_);
    return restorable_;
}

DeviceStore::Transactions DeviceStore::unfinished() const {
    const std::lock_guard lock(mutex_);
    return {unfinished_.begin(), unfinished_.end()};
}

void DeviceStore::add(const std::shared_ptr<SKPaymentTransaction>& transaction) {
    const std::lock_guard lock(mutex_);
    const auto [place, isNew] = places_.try_emplace(transaction.get());
    if (isNew) place->second = unfinished_.insert(unfinished_.end(), transaction);
}

bool DeviceStore::replace(const SKPaymentTransaction& former, std::shared_ptr<SKPaymentTransaction> later) {
    const std::lock_guard lock(mutex_);
    const auto found = places_.find(&former);
    if (found == places_.end()) return false;
    const auto place = found->second;
    places_.erase(found);
    places_.emplace(later.get(), place);
    place->swap(later);
    return true;
}

std::shared_ptr<SKPaymentTransaction> DeviceStore::remove(const SKPaymentTransaction& transaction) {
    const std::lock_guard lock(mutex_);
    const auto found = places_.find(&transaction);
    if (found == places_.end()) return nullptr;
    auto removed = std::move(*found->second);
    unfinished_.erase(found->second);
    places_.erase(found);
    return removed;
}

std::string DeviceStore::nextTransactionIdentifier() {
    const std::lock_guard lock(mutex_);
    return std::to_string(++lastIdentifier_);
}

} // namespace corvantile
