#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace corvantile {

// A local store in the place of the scripted one. What it remembers is the device's.
struct TestStoreOptions {
    // The text of a StoreKit configuration file. One that cannot be read is fatal.
    std::string catalogue = {};
    // As LocalStoreOptions says.
    std::optional<double> clockRate = {};
    std::optional<Date> start = {};
    // The app's time (Clock::now) is the store's. False: it is the device's. Timers go by the device's.
    bool setsAppTime = true;
};

// How a test process is launched.
struct TestOptions {
    // 0: items run in the order posted. Any other: a reproducible draw decides which ready queue runs next.
    std::uint64_t seed = 0;
    std::string bundleIdentifier = "com.example.app";
    // The bundle's resources: bytes by file name, such as "products.json".
    std::map<std::string, std::string> resources = {};
    // Prints on standard output as well.
    bool echoesConsole = false;
    // Prints a line for each load that finds an entry in the keychain but cannot read it.
    bool reportsUnreadableEntries = false;
    // Set: the payment queue and the store's requests are those of a local store.
    std::optional<TestStoreOptions> localStore = {};
    // More items in one run than this are an endless loop, which is fatal.
    std::size_t itemLimit = 10'000'000;
};

} // namespace corvantile
