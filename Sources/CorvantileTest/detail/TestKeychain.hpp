#pragma once

#include "CorvantilePlatform/Keychain/Locksmith.hpp"

#include <memory>
#include <optional>
#include <string_view>

namespace corvantile {

class Console;
class DeviceLink;

// One process's way to the device's keychain. Every save reaches the device at once. Threads: any.
class TestKeychain final : public Locksmith {
public:
    // `unreadableReports` hears of each load that finds an entry but cannot read it; null: nobody does.
    TestKeychain(std::shared_ptr<const DeviceLink> link, std::shared_ptr<Console> unreadableReports);
    ~TestKeychain() override;

    [[nodiscard]] std::optional<KeychainDictionary> load(std::string_view account,
                                                         std::string_view service) const override;
    void save(const KeychainDictionary& dictionary, std::string_view account,
              std::string_view service) override;
    void update(const KeychainDictionary& dictionary, std::string_view account,
                std::string_view service) override;
    bool remove(std::string_view account, std::string_view service) override;

private:
    const std::shared_ptr<const DeviceLink> link_;
    const std::shared_ptr<Console> unreadableReports_;
};

} // namespace corvantile
