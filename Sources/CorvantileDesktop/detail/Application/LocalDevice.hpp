#pragma once

#include "CorvantilePlatform/Application/UIDevice.hpp"

#include <filesystem>
#include <optional>
#include <string>

namespace corvantile {

// This machine as one app sees it. The vendor identifier is made once, in a file of its own in the state
// folder: deleting the folder is the reinstall that ends it. It is read each time, so that processes agree.
class LocalDevice final : public UIDevice {
public:
    // `stateFolder` is made when first needed; empty when there is none.
    LocalDevice(std::filesystem::path stateFolder, std::string systemVersion);

    // nullopt while there is no identifier and none can be stored.
    [[nodiscard]] std::optional<std::string> identifierForVendor() const override;
    [[nodiscard]] std::string systemVersion() const override { return systemVersion_; }

private:
    const std::filesystem::path stateFolder_;
    const std::string systemVersion_;
};

} // namespace corvantile
