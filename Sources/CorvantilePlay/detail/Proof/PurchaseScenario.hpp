#pragma once

#include "CorvantilePlatform/Keychain/KeychainValue.hpp"

#include <string>
#include <vector>

// The purchases that the kill proof plays, and what each is to cause. Everything is named by hand, from the
// rules: no event belongs to two transactions, so that one that appears twice cannot pass for another.
namespace corvantile::tool {

// What the analytics make of one of the store's transactions, by its marker in the keychain.
struct ScenarioRecord {
    std::string marker;
    std::string event;
    bool isSubscription = false;  // reported as a purchase as well
    bool countsIntoTotal = false; // and as total_subscription
};

struct ScenarioStage {
    enum class Kind {
        buy,          // `product`
        wait,         // until `day`, counted from the first purchase; what falls due meanwhile happens
        stopRenewing, // `product` ends with its period
        failBilling,  // of `product`
        validate,     // the host has had the purchase of `product` confirmed
        reopen,       // the app resigns and becomes active
    };
    Kind kind;
    std::string product = {};
    int day = 0;
    std::vector<ScenarioRecord> records = {}; // that follow
    bool beginsGracePeriod = false;
};

// In order.
[[nodiscard]] const std::vector<ScenarioStage>& scenarioStages();

// What the store sells: a StoreKit configuration file.
[[nodiscard]] std::string scenarioCatalogue();
[[nodiscard]] const std::vector<std::string>& scenarioProducts();

inline constexpr const char* scenarioBundle = "com.example.proof";
inline constexpr const char* totalEvent = "total_subscription";
inline constexpr const char* graceEvent = "enter_grace_period";
inline constexpr const char* graceMarker = "enter_grace_period_pro";

// All that the keychain holds under `marker` once the events are sent.
[[nodiscard]] bool isPlainMarker(const KeychainDictionary& entry, const std::string& marker);

// What a sink gets for a record, in order: `event NAME`, `subscription TRANSACTION`.
[[nodiscard]] std::vector<std::string> linesOf(const ScenarioRecord& record);
[[nodiscard]] std::string eventLine(const std::string& name);
[[nodiscard]] std::string subscriptionLine(const std::string& transaction);

} // namespace corvantile::tool
