#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"

#include <filesystem>
#include <optional>

namespace corvantile {

// What the desktop's store sells, and how its time runs.
struct DesktopStoreOptions {
    // A StoreKit configuration file, read at launch. Empty: a store that sells nothing. One that cannot be
    // read is reported on the console, and product requests fail with the reason.
    std::filesystem::path catalogue = {};

    // See LocalStoreOptions.
    std::optional<double> clockRate = {};
    std::optional<Date> start = {};
};

} // namespace corvantile
