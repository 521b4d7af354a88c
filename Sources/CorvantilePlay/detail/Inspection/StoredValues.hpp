#pragma once

#include "CorvantilePlay/PlayRegistry.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::tool {

class StateCopy;

// One value of an app's user defaults.
struct StoredValue {
    std::string name = {};
    std::size_t size = 0;  // bytes, as stored
    bool isRecord = false; // the record store's, hence sealed; else it is the app's own, and plain
    std::optional<std::string> json = {}; // opened
    std::string fault = {};               // why it is not, or what an app that reads it would say
};

struct StoredValues {
    std::vector<StoredValue> values; // by name
    std::string fault;               // why there are none; empty when all is well
};

// Each of `records` checks what is stored under its name. Opens the records with the storage key that the
// keychain of the same state folder holds. Threads: a main thread on which no platform is installed.
[[nodiscard]] StoredValues readStoredValues(const StateCopy& state,
                                            const std::vector<PlayRegistry::RecordKind>& records);

} // namespace corvantile::tool
