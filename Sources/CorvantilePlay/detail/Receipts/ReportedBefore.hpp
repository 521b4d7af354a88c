#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"

#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace corvantile::tool {

// What the keychain of an app remembers for purchase analytics.
struct ReportedBefore {
    std::set<std::string> marked{}; // accounts of markers
    std::optional<Date> firstDate{};
};

// Reads a copy of the keychain in a state folder. A UsageError when there is no such folder, or no copy can
// be made.
[[nodiscard]] ReportedBefore reportedBefore(const std::filesystem::path& stateFolder);

} // namespace corvantile::tool
