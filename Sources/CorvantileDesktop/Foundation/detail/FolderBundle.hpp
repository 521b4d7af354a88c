#pragma once

#include "CorvantilePlatform/Foundation/NSBundle.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// A bundle whose resources are the files of one folder. A name that leads out of the folder finds nothing.
// The receipt is a file elsewhere, since the store writes it.
class FolderBundle final : public NSBundle {
public:
    FolderBundle(std::string identifier, std::filesystem::path folder, std::filesystem::path receiptFile);

    [[nodiscard]] std::string bundleIdentifier() const override { return identifier_; }
    [[nodiscard]] std::optional<std::string> resource(std::string_view name,
                                                      std::string_view extension) const override;
    [[nodiscard]] std::optional<std::string> appStoreReceipt() const override;

private:
    const std::string identifier_;
    const std::filesystem::path folder_;
    const std::filesystem::path receiptFile_;
};

} // namespace corvantile
