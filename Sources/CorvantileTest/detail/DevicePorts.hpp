#pragma once

#include <map>
#include <memory>
#include <string>

namespace corvantile {

class Clock;
class Console;
class DeviceLink;
class Locksmith;
class NSBundle;
class NSUserDefaults;
class UIApplication;
class UIDevice;

// The ports that only keep, or read from the device, what a test has set.
[[nodiscard]] std::shared_ptr<UIApplication> makeApplication();
[[nodiscard]] std::shared_ptr<UIDevice> makeDevice(std::shared_ptr<const DeviceLink> link);
[[nodiscard]] std::shared_ptr<Clock> makeClock(std::shared_ptr<const DeviceLink> link);
// Resources by file name, extension included.
[[nodiscard]] std::shared_ptr<NSBundle> makeBundle(std::shared_ptr<const DeviceLink> link,
                                                   std::string identifier,
                                                   std::map<std::string, std::string> resources);

// One process's keychain. Every save reaches the device at once. `unreadableReports` gets a line for each
// load that finds an entry but cannot read it; null: none.
[[nodiscard]] std::shared_ptr<Locksmith> makeKeychain(std::shared_ptr<const DeviceLink> link,
                                                      std::shared_ptr<Console> unreadableReports);

// One process's user defaults. Every set reaches the device at once, so a kill loses none, unless the device
// is not writable.
[[nodiscard]] std::shared_ptr<NSUserDefaults> makeUserDefaults(std::shared_ptr<const DeviceLink> link);

} // namespace corvantile
