#pragma once

#include "CorvantileDesktop/Keychain/detail/MasterKey.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultFormat.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// What an entry holds, or why it cannot be read.
struct OpenedEntry {
    std::optional<KeychainDictionary> dictionary;
    std::string fault; // when there is no dictionary
};

// Seals and opens a vault's entries under the master key in its folder, which others may make, lose or
// replace meanwhile. Threads: any. Errors: NSError.
class VaultSeal {
public:
    // `report` prints what became of a key file that holds no key.
    VaultSeal(std::filesystem::path folder, std::function<void(const std::string&)> report);

    // Looks for the key's file.
    [[nodiscard]] bool hasKey();

    // Makes the folder and a key when there is none.
    [[nodiscard]] SealedEntry seal(const KeychainDictionary& dictionary, std::string_view account,
                                   std::string_view service);
    [[nodiscard]] OpenedEntry open(const SealedEntry& entry);

private:
    using Key = std::shared_ptr<const MasterKey>; // null: there is none

    [[nodiscard]] Key knownKey();
    // The same, but never one whose file has gone or changed meanwhile.
    [[nodiscard]] Key presentKey();
    [[nodiscard]] Key keyForSealing();
    [[nodiscard]] Key readKey() const;

    const std::filesystem::path folder_;
    const std::function<void(const std::string&)> report_;
    std::mutex mutex_;
    Key key_;
};

} // namespace corvantile
