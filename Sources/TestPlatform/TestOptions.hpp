#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace corvantile {

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
    // More items in one run than this are an endless loop, which is fatal.
    std::size_t itemLimit = 10'000'000;
};

} // namespace corvantile
