#pragma once

#include <memory>

namespace corvantile {

class Console;
class DeviceLink;
class Locksmith;
class NSUserDefaults;

// One process's keychain. Every save reaches the device at once. `unreadableReports` gets a line for each
// load that finds an entry but cannot read it; null: none.
[[nodiscard]] std::shared_ptr<Locksmith> makeKeychain(std::shared_ptr<const DeviceLink> link,
                                                      std::shared_ptr<Console> unreadableReports);

// One process's user defaults. Every set reaches the device at once, so a kill loses none, unless the device
// is not writable.
[[nodiscard]] std::shared_ptr<NSUserDefaults> makeUserDefaults(std::shared_ptr<const DeviceLink> link);

} // namespace corvantile
