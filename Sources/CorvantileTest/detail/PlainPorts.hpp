#pragma once

#include <map>
#include <memory>
#include <string>

namespace corvantile {

class Clock;
class DeviceLink;
class NSBundle;
class UIApplication;
class UIDevice;

// The ports without a mind of their own: each keeps, or reads from the device, what a test has set.
[[nodiscard]] std::shared_ptr<UIApplication> makeApplication();
[[nodiscard]] std::shared_ptr<UIDevice> makeDevice(std::shared_ptr<const DeviceLink> link);
[[nodiscard]] std::shared_ptr<Clock> makeClock(std::shared_ptr<const DeviceLink> link);
// Resources by file name, extension included.
[[nodiscard]] std::shared_ptr<NSBundle> makeBundle(std::shared_ptr<const DeviceLink> link,
                                                   std::string identifier,
                                                   std::map<std::string, std::string> resources);

} // namespace corvantile
