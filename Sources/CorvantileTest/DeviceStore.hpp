#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"
#include "CorvantilePlatform/Store/StoreRequests.hpp"

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace corvantile {

// The store's side of a test device: what it sells, and what it knows of the person who buys. It outlives
// every process and every reinstall. Threads: any.
class CORVANTILE_API DeviceStore final {
public:
    using Products = StoreRequests::Products;
    using Transactions = SKPaymentQueue::Transactions;

    // What the store sells, in the order in which it answers; nothing at first.
    void setProducts(Products products);
    [[nodiscard]] Products products() const;

    // The store's own account of what was bought, a JSON text; nullopt, as at first, while there is none.
    void setReceipt(std::optional<std::string> receiptJSON);
    [[nodiscard]] std::optional<std::string> receipt() const;

    // The products that a restore gives back.
    void setRestorable(std::vector<std::string> productIdentifiers);
    [[nodiscard]] std::vector<std::string> restorable() const;

    // The transactions that no process has finished, oldest first.
    [[nodiscard]] Transactions unfinished() const;
    // Does nothing with one that is there already.
    void add(const std::shared_ptr<SKPaymentTransaction>& transaction);
    // A later state in the place of a former one. False when that is not there.
    bool replace(const SKPaymentTransaction& former, std::shared_ptr<SKPaymentTransaction> later);
    // What was removed; null when there was no such transaction.
    std::shared_ptr<SKPaymentTransaction> remove(const SKPaymentTransaction& transaction);

    // "1000000001", then the next number each time.
    [[nodiscard]] std::string nextTransactionIdentifier();

private:
    using List = std::list<std::shared_ptr<SKPaymentTransaction>>;

    mutable std::mutex mutex_;
    Products products_;
    std::optional<std::string> receipt_;
    std::vector<std::string> restorable_;
    List unfinished_;
    std::unordered_map<const SKPaymentTransaction*, List::iterator> places_;
    std::uint64_t lastIdentifier_ = 1000000000;
};

} // namespace corvantile
