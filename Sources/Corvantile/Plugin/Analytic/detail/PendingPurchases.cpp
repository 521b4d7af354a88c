#include "Corvantile/Plugin/Analytic/detail/PendingPurchases.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Foundation/detail/UUID.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"
#include "HostCore/HostCore.hpp"

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <optional>
#include <utility>

namespace corvantile {

namespace {

using recordjson::Object;

constexpr int formatVersion = 1;
constexpr std::string_view eventsEntry = "events";
// Before the transaction's identifier: the key in the user defaults whose value is the process that began.
constexpr std::string_view begunKey = "pending_purchase_";

constexpr struct {
    PurchaseKind kind;
    const char* name;
} kindNames[] = {{PurchaseKind::trial, "trial"},
                 {PurchaseKind::subscription, "subscription"},
                 {PurchaseKind::oneTimePurchase, "oneTimePurchase"},
                 {PurchaseKind::trialConversion, "trialConversion"},
                 {PurchaseKind::renewal, "renewal"}};

std::string nameOf(PurchaseKind kind) {
    const auto found = std::find_if(std::begin(kindNames), std::end(kindNames),
                                    [&](const auto& known) { return known.kind == kind; });
    return found == std::end(kindNames) ? "" : found->name;
}

std::optional<PurchaseKind> kindOf(const std::string& name) {
    const auto found = std::find_if(std::begin(kindNames), std::end(kindNames),
                                    [&](const auto& known) { return known.name == name; });
    return found == std::end(kindNames) ? std::nullopt : std::optional(found->kind);
}

std::string textOf(const PurchaseDecision& decision) {
    Object object{{"version", formatVersion},
                  {"kind", nameOf(decision.kind)},
                  {"name", decision.name},
                  {"productID", decision.productID},
                  {"value", decision.value.description()},
                  {"currency", decision.currency},
                  {"transactionID", decision.transactionID},
                  {"purchaseDate", recordjson::dateValue(decision.purchaseDate)}};
    if (decision.region) object["region"] = *decision.region;
    return recordjson::write(object);
}

std::optional<PurchaseDecision> decisionOf(const std::string& text) {
    const auto read = recordjson::read(text, [](const Object& object) -> std::optional<PurchaseDecision> {
        const auto textAt = [&](const char* key) { return object.at(key).get<std::string>(); };
        const auto kind = kindOf(textAt("kind"));
        const auto value = NSDecimalNumber::fromText(textAt("value"));
        if (object.at("version") != formatVersion || !kind || !value) return std::nullopt;
        return PurchaseDecision{.kind = *kind,
                                .name = textAt("name"),
                                .productID = textAt("productID"),
                                .value = *value,
                                .currency = textAt("currency"),
                                .region = object.contains("region") ? std::optional(textAt("region"))
                                                                    : std::nullopt,
                                .transactionID = textAt("transactionID"),
                                .purchaseDate = recordjson::date(object.at("purchaseDate"))};
    });
    return read.value_or(std::nullopt);
}

std::string freshIdentifier() {
    std::array<unsigned char, 16> bytes{};
    Platform::current().ports().random->copyBytes(bytes.data(), bytes.size());
    return uuidText(bytes);
}

std::string begunKeyOf(const std::string& transactionID) {
    return std::string(begunKey).append(transactionID);
}

void omitUnreadable(const std::string& transactionID) {
    const auto omit = HostCore::omitBlock();
    if (!omit) return;
    const auto text = "The pending events of transaction " + transactionID + " cannot be read.";
    omit(std::make_exception_ptr(
        NSError("corvantile.purchases", 1, {{NSError::localizedDescriptionKey, text}})));
}

} // namespace

PendingPurchases::PendingPurchases(std::shared_ptr<NSUserDefaults> userDefaults)
    : userDefaults_(std::move(userDefaults)), process_(freshIdentifier()) {}

bool PendingPurchases::isPending(const KeychainDictionary& entry) {
    const auto found = entry.find(eventsEntry);
    return found != entry.end() && found->second.as<std::string>() != nullptr;
}

void PendingPurchases::save(const PurchaseDecision& decision) const {
    save(decision.transactionID, textOf(decision));
}

void PendingPurchases::saveValidated(const std::string& account) const {
    save(account, recordjson::write({{"version", formatVersion}, {"kind", "validated"}}));
}

bool PendingPurchases::takeOver(const std::string& account) const {
    const auto key = begunKeyOf(account);
    if (userDefaults_->valueForKey(key) == NSUserDefaults::Value(process_)) return false;
    userDefaults_->setValue(process_, key);
    return true;
}

// The key is flushed, so that it is there after a power loss whenever the entry is.
void PendingPurchases::save(const std::string& account, const std::string& events) const {
    userDefaults_->setValue(process_, begunKeyOf(account));
    userDefaults_->synchronize();
    Locksmith::saveData({{account, true}, {std::string(eventsEntry), events}}, account);
}

void PendingPurchases::settle(const std::string& transactionID) const {
    Locksmith::updateData({{transactionID, true}}, transactionID);
    userDefaults_->removeObjectForKey(begunKeyOf(transactionID));
}

std::vector<PurchaseDecision> PendingPurchases::takeLeftBehind() const {
    std::vector<PurchaseDecision> decisions;
    for (const auto& [key, begunBy] : userDefaults_->dictionaryRepresentation()) {
        if (!key.starts_with(begunKey) || begunBy == NSUserDefaults::Value(process_)) continue;
        const auto transactionID = key.substr(begunKey.size());
        const auto entry = Locksmith::loadDataForUserAccount(transactionID);
        if (!entry) continue; // cannot be read for now, or its save never came: then a pass reports it
        if (!isPending(*entry)) {
            userDefaults_->removeObjectForKey(key);
        } else if (transactionID.starts_with(validatedMarker)) {
            continue; // for the host
        } else if (auto decision = decisionOf(*entry->find(eventsEntry)->second.as<std::string>())) {
            userDefaults_->setValue(process_, key);
            decisions.push_back(std::move(*decision));
        } else {
            omitUnreadable(transactionID);
        }
    }
    return decisions;
}

} // namespace corvantile
