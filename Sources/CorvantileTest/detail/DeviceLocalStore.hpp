#pragma once

#include "CorvantileTest/TestOptions.hpp"

#include <memory>

namespace corvantile {

class Console;
class DeviceLink;
class LocalStore;

// One process's local store, as `options.localStore` says, over what the device remembers. Once the link is
// cut, nothing that it does is remembered.
[[nodiscard]] std::shared_ptr<LocalStore> makeLocalStore(std::shared_ptr<const DeviceLink> link,
                                                         const TestOptions& options,
                                                         std::shared_ptr<Console> console);

} // namespace corvantile
