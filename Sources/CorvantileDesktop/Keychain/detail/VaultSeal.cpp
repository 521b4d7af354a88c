#include "CorvantileDesktop/Keychain/detail/VaultSeal.hpp"

#include "CorvantileCrypto/SealedBox.hpp"
#include "CorvantileDesktop/Keychain/detail/DictionaryCoding.hpp"
#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"

#include <utility>

namespace corvantile {

namespace {

// Both names, so that a box opens only in the place where it was saved. The length keeps "ab" + "c" apart
// from "a" + "bc".
std::string associatedData(std::string_view account, std::string_view service) {
    return std::to_string(service.size()).append(":").append(service).append(account);
}

} // namespace

VaultSeal::VaultSeal(std::filesystem::path folder, std::function<void(const std::string&)> report)
    : folder_(std::move(folder)), report_(std::move(report)) {}

bool VaultSeal::hasKey() { return presentKey() != nullptr; }

SealedEntry VaultSeal::seal(const KeychainDictionary& dictionary, std::string_view account,
                            std::string_view service) {
    const auto master = keyForSealing();
    auto box = SealedBox::seal(master->key(), encodeDictionary(dictionary), associatedData(account, service));
    if (!box) throw keychainError(KeychainStatus::notAvailable, "The entry could not be sealed.");
    return {std::string(service), std::string(account), std::string(master->identifier()), std::move(*box)};
}

OpenedEntry VaultSeal::open(const SealedEntry& entry) {
    auto master = knownKey();
    if (master && entry.keyIdentifier != master->identifier()) master = presentKey();
    if (!master) return {std::nullopt, "there is no master key."};
    const auto bytes =
        SealedBox::open(master->key(), entry.box, associatedData(entry.account, entry.service));
    auto dictionary = bytes ? decodeDictionary(*bytes) : std::nullopt;
    if (dictionary) return {std::move(dictionary), {}};
    const bool isOfAnotherKey = entry.keyIdentifier != master->identifier();
    return {std::nullopt, isOfAnotherKey ? "it was sealed under another master key." : "it is damaged."};
}

VaultSeal::Key VaultSeal::knownKey() {
    const std::lock_guard lock(mutex_);
    if (!key_) key_ = readKey();
    return key_;
}

VaultSeal::Key VaultSeal::presentKey() {
    const std::lock_guard lock(mutex_);
    if (!key_ || !key_->isStillIn(folder_)) key_ = readKey();
    return key_;
}

VaultSeal::Key VaultSeal::keyForSealing() {
    if (auto known = presentKey()) return known;
    const ReportingLock lock(mutex_);
    const auto folder = PrivateFolder::make(folder_);
    const auto folderLock = folder.lock();
    auto found = MasterKey::read(folder); // another process may have been quicker
    key_ = std::make_shared<const MasterKey>(found ? std::move(*found) : MasterKey::make(folder, report_));
    return key_;
}

VaultSeal::Key VaultSeal::readKey() const {
    const auto folder = PrivateFolder::find(folder_);
    auto found = folder ? MasterKey::read(*folder) : std::nullopt;
    return found ? std::make_shared<const MasterKey>(std::move(*found)) : nullptr;
}

} // namespace corvantile
