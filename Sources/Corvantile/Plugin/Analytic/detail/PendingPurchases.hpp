#pragma once

#include "Corvantile/Plugin/Analytic/detail/PurchaseDecision.hpp"
#include "CorvantilePlatform/Keychain/KeychainValue.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class NSUserDefaults;

// Purchases that are marked while their events are still being sent. The entry of the marker holds the
// decision too, so both are saved by one step: `{"1000": true, "events": "{…}"}`. A keychain cannot be
// listed, so a key in the user defaults, written before the entry, tells a later process where to look.
// Threads: any.
class PendingPurchases {
public:
    explicit PendingPurchases(std::shared_ptr<NSUserDefaults> userDefaults);

    // An entry as `save` makes it.
    [[nodiscard]] static bool isPending(const KeychainDictionary& entry);

    // Adds the entry. Throws as the keychain does.
    void save(const PurchaseDecision& decision) const;
    // All its events are sent: leaves the plain marker. Throws as the keychain does.
    void settle(const std::string& transactionID) const;

    // What earlier processes have left, each for one caller. What cannot be read goes to HostCore::omitBlock
    // and stays.
    [[nodiscard]] std::vector<PurchaseDecision> takeLeftBehind() const;

private:
    const std::shared_ptr<NSUserDefaults> userDefaults_;
    const std::string process_; // tells what this process has begun from what others left
};

} // namespace corvantile
