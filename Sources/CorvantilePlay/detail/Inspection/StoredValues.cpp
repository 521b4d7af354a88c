#include "CorvantilePlay/detail/Inspection/StoredValues.hpp"

#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"
#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlatform/Foundation/detail/Base64.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Output/Consoles.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <string_view>
#include <variant>

namespace corvantile::tool {

namespace {

using RecordKinds = std::vector<PlayRegistry::RecordKind>;

const std::string recordPrefix = std::string(DatabaseManipulating::prefix) + "_";

// A process of the app on the copy, whose framework opens the records as it always does.
class RecordOpener {
public:
    RecordOpener(const StateCopy& state, const std::string& bundleIdentifier)
        : platform_({.bundleIdentifier = bundleIdentifier,
                     .stateFolder = state.folder(),
                     .console = std::make_shared<SilentConsole>(),
                     .decorate = [vault = std::make_shared<Vault>(state.keychain())](Ports& ports) {
                         ports.keychain = vault;
                     }}) {}

    [[nodiscard]] std::optional<std::string> open(const std::string& sealed) {
        return preference_->decrypt(sealed);
    }

private:
    DesktopPlatform platform_;
    const std::shared_ptr<UserPreference> preference_ =
        std::make_shared<UserPreference>(std::make_shared<UserDefaultsDatabase>());
};

struct StorageKeys {
    std::vector<std::string> services; // whose storage key can be read
    std::string fault;                 // why there are none
};

// A storage key is kept under the app's bundle identifier, which is one file name.
bool canBeBundleIdentifier(const std::string& service) {
    return !service.empty() && service.front() != '.' && service.find('/') == std::string::npos;
}

StorageKeys findStorageKeys(const StateCopy& state) {
    StorageKeys keys{{},
                     state.faultOf("keychain").empty() ? "the keychain holds no storage key"
                                                       : "the keychain cannot be read"};
    for (const auto& entry : Vault(state.keychain()).inspect().entries) {
        if (entry.account != "realm_encryption_key") continue;
        const bool holdsKey = entry.dictionary && entry.dictionary->contains("key") &&
                              entry.dictionary->at("key").as<std::string>() != nullptr;
        if (holdsKey && canBeBundleIdentifier(entry.service))
            keys.services.push_back(entry.service);
        else
            keys.fault = "the storage key in the keychain cannot be read" +
                         (entry.fault.empty() ? "" : ": " + entry.fault);
    }
    return keys;
}

std::string decryptionError(const std::string& sealed, const StorageKeys& keys) {
    const auto bytes = bytesOfBase64(sealed);
    if (!bytes || bytes->empty() || bytes->size() % 16 != 0) return "it is damaged, or was never sealed";
    if (keys.services.empty()) return keys.fault;
    return "it was sealed under another storage key, or is damaged";
}

std::string errorOf(const std::string& name, const std::string& json, const RecordKinds& records) {
    if (!nlohmann::json::accept(json)) return "it decrypts, but to no JSON";
    const bool isValid =
        std::all_of(records.begin(), records.end(), [&](const PlayRegistry::RecordKind& record) {
            return !name.starts_with(recordPrefix + record.name + "_") || record.isValid(json);
        });
    return isValid ? "" : "it decrypts, but is not the record that its name says";
}

void openRecords(const StateCopy& state, const NSUserDefaults::Dictionary& stored, const RecordKinds& records,
                 std::vector<StoredValue>& values) {
    const auto keys = findStorageKeys(state);
    const auto sealedTextOf = [&](const StoredValue& value) {
        return std::get_if<std::string>(&stored.find(value.name)->second);
    };
    for (const auto& service : keys.services) {
        RecordOpener opener(state, service);
        for (auto& value : values) {
            const auto* const sealed = sealedTextOf(value);
            if (value.isRecord && sealed != nullptr && !value.json) value.json = opener.open(*sealed);
        }
    }
    for (auto& value : values) {
        if (!value.isRecord) continue;
        const auto* const sealed = sealedTextOf(value);
        if (sealed == nullptr)
            value.fault = "it is a boolean, no record";
        else
            value.fault =
                value.json ? errorOf(value.name, *value.json, records) : decryptionError(*sealed, keys);
    }
}

StoredValue storedValueOf(const std::string& name, const NSUserDefaults::Value& stored) {
    StoredValue value{.name = name, .size = 1, .isRecord = name.starts_with(recordPrefix)};
    const auto* const text = std::get_if<std::string>(&stored);
    if (text != nullptr) value.size = text->size();
    if (value.isRecord) return value;
    const auto json = text != nullptr ? nlohmann::json(*text) : nlohmann::json(std::get<bool>(stored));
    value.json = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return value;
}

} // namespace

StoredValues readStoredValues(const StateCopy& state, const RecordKinds& records) {
    StoredValues read;
    const auto inspection = SQLiteUserDefaults::inspect(state.userDefaults());
    read.fault = state.faultOf("user-defaults");
    if (read.fault.empty()) read.fault = inspection.fault;
    read.values.reserve(inspection.values.size());
    for (const auto& [name, value] : inspection.values) read.values.push_back(storedValueOf(name, value));
    openRecords(state, inspection.values, records, read.values);
    return read;
}

} // namespace corvantile::tool
