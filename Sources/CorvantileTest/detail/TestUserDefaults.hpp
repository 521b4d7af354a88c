#pragma once

#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

class DeviceLink;

// One process's view of the device's user defaults. Every set reaches the device at once, so a kill loses
// none, unless the device is not writable. Threads: any.
class TestUserDefaults final : public NSUserDefaults {
public:
    explicit TestUserDefaults(std::shared_ptr<const DeviceLink> link);
    ~TestUserDefaults() override;

    [[nodiscard]] std::optional<Value> valueForKey(std::string_view key) const override;
    void setValue(std::optional<Value> value, std::string_view forKey) override;
    [[nodiscard]] Dictionary dictionaryRepresentation() const override;
    bool synchronize() override;

private:
    // With the mutex held. True when the device has everything.
    bool catchUp() const;
    [[nodiscard]] Dictionary values() const;

    const std::shared_ptr<const DeviceLink> link_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, std::optional<Value>, std::less<>> unwritten_;
};

} // namespace corvantile
