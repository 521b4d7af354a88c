#pragma once

#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace corvantile {

class Console;

// This machine as one app sees it. The vendor identifier is made once, in a file of its own in the state
// folder: deleting the folder is the reinstall that ends it. It is read each time, so that processes agree.
// The names of all records hang on it, so a second file holds it with a checksum: where the first one is lost
// or damaged, it is moved aside, which the console reports, and made again from the second.
class LocalDevice final : public UIDevice {
public:
    // `stateFolder` is made when first needed; empty when there is none. The console may be null.
    LocalDevice(std::filesystem::path stateFolder, std::string systemVersion,
                std::shared_ptr<Console> console);

    // nullopt while there is no identifier and none can be stored, or it cannot be read.
    [[nodiscard]] std::optional<std::string> identifierForVendor() const override;
    [[nodiscard]] std::string systemVersion() const override { return systemVersion_; }

private:
    [[nodiscard]] std::optional<std::string> repaired() const;

    const std::filesystem::path stateFolder_;
    const std::string systemVersion_;
    const std::shared_ptr<Console> console_;
};

struct VendorIdentifierInspection {
    std::optional<std::string> identifier; // what the next launch will use; nullopt: it will make a new one
    std::string fault;                     // what is wrong with the files; empty when all is well
};

// Reads the two files as they stand.
[[nodiscard]] CORVANTILE_API VendorIdentifierInspection
inspectVendorIdentifier(const std::filesystem::path& stateFolder);

} // namespace corvantile
