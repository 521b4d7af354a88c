#include "CorvantileTest/DeviceKeychain.hpp"

namespace corvantile {

namespace {

std::pair<std::string, std::string> named(std::string_view account, std::string_view service) {
    return {std::string(service), std::string(account)};
}

void throwNext(std::deque<KeychainStatus>& denials) {
    if (denials.empty()) return;
    const auto status = denials.front();
    denials.pop_front();
    throw keychainError(status);
}

} // namespace

DeviceKeychain::~DeviceKeychain() = default;

std::vector<DeviceKeychain::Entry> DeviceKeychain::entries() const {
    const std::lock_guard lock(mutex_);
    std::vector<Entry> list;
    for (const auto& [name, content] : entries_)
        list.push_back({name.first, name.second, content.dictionary, content.isReadable});
    return list;
}

void DeviceKeychain::removeAll() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
}

void DeviceKeychain::setLocked(bool locked) {
    const std::lock_guard lock(mutex_);
    isLocked_ = locked;
    opensAfterLoad_ = false;
}

bool DeviceKeychain::isLocked() const {
    const std::lock_guard lock(mutex_);
    return isLocked_;
}

void DeviceKeychain::lockForNextLoad() {
    const std::lock_guard lock(mutex_);
    isLocked_ = true;
    opensAfterLoad_ = true;
}

void DeviceKeychain::makeUnreadable(std::string_view account, std::string_view service) {
    const std::lock_guard lock(mutex_);
    entries_[named(account, service)].isReadable = false;
}

void DeviceKeychain::denyNextSave(KeychainStatus status) {
    const std::lock_guard lock(mutex_);
    deniedSaves_.push_back(status);
}

void DeviceKeychain::denyNextUpdate(KeychainStatus status) {
    const std::lock_guard lock(mutex_);
    deniedUpdates_.push_back(status);
}

DeviceKeychain::Finding DeviceKeychain::find(std::string_view account, std::string_view service) const {
    const std::lock_guard lock(mutex_);
    if (isLocked_) {
        isLocked_ = !std::exchange(opensAfterLoad_, false);
        return {.fault = "the keychain is locked."};
    }
    const auto found = entries_.find(named(account, service));
    if (found == entries_.end()) return {};
    if (!found->second.isReadable) return {.fault = "it is damaged."};
    return {.dictionary = found->second.dictionary};
}

std::optional<KeychainDictionary> DeviceKeychain::load(std::string_view account,
                                                       std::string_view service) const {
    return find(account, service).dictionary;
}

void DeviceKeychain::save(const KeychainDictionary& dictionary, std::string_view account,
                          std::string_view service) {
    const std::lock_guard lock(mutex_);
    requireUnlocked();
    throwNext(deniedSaves_);
    if (!entries_.try_emplace(named(account, service), Content{dictionary, true}).second)
        throw keychainError(KeychainStatus::duplicateItem);
}

void DeviceKeychain::update(const KeychainDictionary& dictionary, std::string_view account,
                            std::string_view service) {
    const std::lock_guard lock(mutex_);
    requireUnlocked();
    throwNext(deniedUpdates_);
    entries_.insert_or_assign(named(account, service), Content{dictionary, true});
}

bool DeviceKeychain::remove(std::string_view account, std::string_view service) {
    const std::lock_guard lock(mutex_);
    requireUnlocked();
    return entries_.erase(named(account, service)) > 0;
}

void DeviceKeychain::requireUnlocked() const {
    if (isLocked_) throw keychainError(KeychainStatus::interactionNotAllowed);
}

} // namespace corvantile
