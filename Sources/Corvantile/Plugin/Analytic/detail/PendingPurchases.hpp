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
    // Before the transaction's identifier in the account of a validated purchase's marker.
    static constexpr std::string_view validatedMarker = "validated_";

    explicit PendingPurchases(std::shared_ptr<NSUserDefaults> userDefaults);

    // An entry as `save` makes it.
    [[nodiscard]] static bool isPending(const KeychainDictionary& entry);

    // Adds the entry. Throws as the keychain does.
    void save(const PurchaseDecision& decision) const;
    // The same for a validated purchase, of which nothing is kept: the host reports it again.
    void saveValidated(const std::string& account) const;
    // True for one caller, where an earlier process has left the entry.
    [[nodiscard]] bool takeOver(const std::string& account) const;
    // All its events are sent: leaves the plain marker. Throws as the keychain does.
    void settle(const std::string& transactionID) const;

    // What earlier processes have left but for validated purchases, each for one caller. What cannot be read
    // goes to HostCore::omitBlock and stays.
    [[nodiscard]] std::vector<PurchaseDecision> takeLeftBehind() const;

private:
    void save(const std::string& account, const std::string& events) const;

    const std::shared_ptr<NSUserDefaults> userDefaults_;
    const std::string process_; // tells what this process has begun from what others left
};

} // namespace corvantile
