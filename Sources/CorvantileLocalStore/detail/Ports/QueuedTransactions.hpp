#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace corvantile {

// The transactions that wait in the queue, as the objects that the app gets to see. Threads: one at a time.
class QueuedTransactions {
public:
    using Transactions = SKPaymentQueue::Transactions;

    struct Difference {
        Transactions updated{}; // a new object for each
        Transactions removed{};
    };

    // What is different from what was known.
    Difference take(const LocalStore::News& news);

    // A payment that the store could not write down: it has no number there, and is gone with the process.
    std::shared_ptr<SKPaymentTransaction> addUnwritten(SKPaymentTransaction::Facts facts);

    [[nodiscard]] Transactions all() const;

    // nullopt when it does not wait any more.
    [[nodiscard]] std::optional<std::int64_t> number(const SKPaymentTransaction& transaction) const;
    // Of a transaction that the store knows nothing of.
    [[nodiscard]] static bool isUnwritten(std::int64_t number) { return number >= firstUnwritten; }
    std::shared_ptr<SKPaymentTransaction> remove(std::int64_t number);

    // Payments that nobody has decided.
    [[nodiscard]] std::vector<std::int64_t> purchasing() const;

private:
    static constexpr std::int64_t firstUnwritten = std::int64_t{1} << 62; // behind everything else

    struct Entry {
        StoreTransaction record;
        std::shared_ptr<SKPaymentTransaction> transaction;
    };
    void update(const StoreTransaction& record, Difference& difference);

    std::map<std::int64_t, Entry> entries_;
    std::unordered_map<const SKPaymentTransaction*, std::int64_t> numbers_;
    std::int64_t nextUnwritten_ = firstUnwritten;
};

} // namespace corvantile
