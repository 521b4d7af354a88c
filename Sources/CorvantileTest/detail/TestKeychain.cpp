#include "CorvantileTest/detail/TestKeychain.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"
#include "CorvantileTest/DeviceKeychain.hpp"
#include "CorvantileTest/TestDevice.hpp"
#include "CorvantileTest/detail/DeviceLink.hpp"

#include <utility>

namespace corvantile {

TestKeychain::TestKeychain(std::shared_ptr<const DeviceLink> link, std::shared_ptr<Console> unreadableReports)
    : link_(std::move(link)), unreadableReports_(std::move(unreadableReports)) {}

TestKeychain::~TestKeychain() = default;

std::optional<KeychainDictionary> TestKeychain::load(std::string_view account,
                                                     std::string_view service) const {
    auto finding = link_->device().keychain().find(account, service);
    if (!finding.fault.empty() && unreadableReports_)
        unreadableReports_->print(unreadableEntryLine(account, service, finding.fault));
    return std::move(finding.dictionary);
}

void TestKeychain::save(const KeychainDictionary& dictionary, std::string_view account,
                        std::string_view service) {
    if (!link_->isCut()) link_->device().keychain().save(dictionary, account, service);
}

void TestKeychain::update(const KeychainDictionary& dictionary, std::string_view account,
                          std::string_view service) {
    if (!link_->isCut()) link_->device().keychain().update(dictionary, account, service);
}

bool TestKeychain::remove(std::string_view account, std::string_view service) {
    return !link_->isCut() && link_->device().keychain().remove(account, service);
}

} // namespace corvantile
