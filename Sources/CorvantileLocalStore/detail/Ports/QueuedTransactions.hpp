#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Store/SKPaymentQueue.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

namespace corvantile {

// The transactions that wait in the queue, as the objects that the app gets to see. Threads: one at a time.
class QueuedTransactions {
public:
    using Transactions = SKPaymentQueue::Transactions;

    using Numbers = std::set<std::int64_t>;

    struct Difference {
        Numbers updated{}; // a new object for each
        Transactions removed{};
        Numbers removedNumbers{};
    };

    // What is different from what was known.
    Difference take(const LocalStore::News& news);

    // A payment that the store could not write down: it has no number there, and is gone with the process.
    std::shared_ptr<SKPaymentTransaction> addUnwritten(SKPaymentTransaction::Facts facts);

    [[nodiscard]] Transactions all() const;

    // Whose a transaction is: this process's, once `claim` has returned true for it, or perhaps another's.
    using Claim = std::function<bool(std::int64_t number)>;
    // Tries to claim each that is not ours, and returns those that are from now on.
    Numbers claimAll(const Claim& claim);
    [[nodiscard]] Transactions ours() const;
    [[nodiscard]] bool areAllOurs() const;
    // Those of them that are ours.
    [[nodiscard]] Transactions ours(const Numbers& numbers) const;

    // The observers of this process are given these.
    void noteDelivered(const Transactions& transactions);
    // The identifiers of those that they have not been given.
    [[nodiscard]] std::set<std::string> undelivered() const;

    // nullopt when it does not wait any more.
    [[nodiscard]] std::optional<std::int64_t> number(const SKPaymentTransaction& transaction) const;
    // Of a transaction that the store knows nothing of.
    [[nodiscard]] static bool isUnwritten(std::int64_t number) { return number >= firstUnwritten; }
    std::shared_ptr<SKPaymentTransaction> remove(std::int64_t number);

    // Those of them that nobody has decided.
    [[nodiscard]] Numbers purchasing(const Numbers& numbers) const;

private:
    static constexpr std::int64_t firstUnwritten = std::int64_t{1} << 62; // behind everything else

    struct Entry {
        StoreTransaction record;
        std::shared_ptr<SKPaymentTransaction> transaction;
        bool isOurs = false;
        bool isDelivered = false; // as it stands now
    };
    void update(const StoreTransaction& record, Difference& difference);

    std::map<std::int64_t, Entry> entries_;
    std::unordered_map<const SKPaymentTransaction*, std::int64_t> numbers_;
    std::int64_t nextUnwritten_ = firstUnwritten;
};

} // namespace corvantile
