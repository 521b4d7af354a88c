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

    // With a catalogue, the app's time (Clock::now) is the store's, which dates its purchases. False: it is
    // the system's. Timers, logs and the attribution SDK always go by the system's.
    bool setsAppTime = true;
};

} // namespace corvantile
