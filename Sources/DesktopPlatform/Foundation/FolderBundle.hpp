#pragma once

#include "Platform/Foundation/NSBundle.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// A bundle whose resources are the files of one folder. A name that leads out of the folder finds nothing.
class FolderBundle final : public NSBundle {
public:
    FolderBundle(std::string identifier, std::filesystem::path folder);

    [[nodiscard]] std::string bundleIdentifier() const override { return identifier_; }
    [[nodiscard]] std::optional<std::string> resource(std::string_view name,
                                                      std::string_view extension) const override;

private:
    const std::string identifier_;
    const std::filesystem::path folder_;
};

} // namespace corvantile
