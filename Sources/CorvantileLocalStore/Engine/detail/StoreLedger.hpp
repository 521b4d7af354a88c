#pragma once

#include "CorvantileLocalStore/Engine/StoreRecords.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// Everything that a store remembers, and what of it has changed since it was last written down.
class StoreLedger {
public:
    using Purchases = std::map<std::string, StorePurchase, std::less<>>;
    using Transactions = std::map<std::int64_t, StoreTransaction>;
    using Subscriptions = std::map<std::string, StoreSubscription, std::less<>>;

    struct Changes {
        StoreStorage::Changes rows{};
        std::vector<StoreTransaction> updated{}; // in the queue's order
        std::vector<StoreTransaction> removed{}; // as they stood
        bool hasNewPurchases = false;            // or some that look different in a receipt
    };

    StoreLedger() = default;
    // What cannot be read is left out, and its keys go to `unreadable`.
    StoreLedger(const StoreStorage::Rows& rows, std::vector<std::string>& unreadable);

    // Whether the counters were read. Where they were not, they may be lower than what was counted.
    [[nodiscard]] bool hasCounters() const { return hasCounters_; }
    [[nodiscard]] StoreStorage::Counters counters() const;
    void raiseCounters(const StoreStorage::Counters& counters);

    [[nodiscard]] const Purchases& purchases() const { return purchases_; }
    [[nodiscard]] const Transactions& transactions() const { return transactions_; }
    [[nodiscard]] const Subscriptions& subscriptions() const { return subscriptions_; }
    [[nodiscard]] const StoreSettings& settings() const { return settings_; }
    [[nodiscard]] const std::optional<StoreClockSetting>& clock() const { return clock_; }

    // How many purchases were refunded.
    [[nodiscard]] std::size_t refunds() const { return refunds_; }

    // nullptr when there is none.
    [[nodiscard]] const StorePurchase* purchase(std::string_view identifier) const;
    [[nodiscard]] const StoreTransaction* transaction(std::int64_t number) const;

    void put(StorePurchase purchase);
    void put(StoreTransaction transaction);
    void put(StoreSubscription subscription);
    void put(StoreSettings settings);
    void put(StoreClockSetting clock);
    void removeTransaction(std::int64_t number);

    // Larger than all before.
    [[nodiscard]] std::string makeIdentifier();
    [[nodiscard]] std::int64_t makeNumber();

    [[nodiscard]] bool hasChanges() const;
    [[nodiscard]] Changes takeChanges();

private:
    // False when it is left out.
    [[nodiscard]] bool readRow(const std::string& key, const std::string& text);

    Purchases purchases_;
    std::size_t refunds_ = 0;
    Transactions transactions_;
    Subscriptions subscriptions_;
    StoreSettings settings_;
    bool hasCounters_ = false;
    std::optional<StoreClockSetting> clock_;

    std::set<std::string> changedPurchases_;
    std::set<std::int64_t> changedTransactions_;
    std::vector<StoreTransaction> removedTransactions_;
    std::set<std::string> changedSubscriptions_;
    bool haveSettingsChanged_ = false;
    bool hasClockChanged_ = false;
};

} // namespace corvantile
