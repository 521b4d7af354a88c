#include "CorvantilePlatform/Keychain/Locksmith.hpp"

#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

namespace {

Locksmith& installedKeychain() { return *Platform::current().ports().keychain; }

} // namespace

Locksmith::~Locksmith() = default;

std::string Locksmith::defaultService() { return NSBundle::main()->bundleIdentifier(); }

std::optional<KeychainDictionary> Locksmith::loadDataForUserAccount(std::string_view account,
                                                                    std::string_view service) {
    return installedKeychain().load(account, service);
}

void Locksmith::saveData(const KeychainDictionary& dictionary, std::string_view account,
                         std::string_view service) {
    installedKeychain().save(dictionary, account, service);
}

void Locksmith::updateData(const KeychainDictionary& dictionary, std::string_view account,
                           std::string_view service) {
    installedKeychain().update(dictionary, account, service);
}

bool Locksmith::deleteDataForUserAccount(std::string_view account, std::string_view service) {
    return installedKeychain().remove(account, service);
}

} // namespace corvantile
