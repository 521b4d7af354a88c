#pragma once

#include "CorvantileDesktop/Adjust/OutboxEntry.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace corvantile {

// A package as the outbox keeps it.
struct OutboxPackage {
    std::int64_t number = 0; // its place in the order; 0 while it is in memory alone
    std::string identifier;
    PackageKind kind = PackageKind::event;
    std::string form; // what is posted; of a long one that has been delivered, the beginning
    PackageState state = PackageState::waiting;
    int tries = 0;
    std::optional<DeliveryAnswer> lastAnswer = {};
};

[[nodiscard]] OutboxEntry entryOf(const OutboxPackage& package);

// `event 'abc123' 0C6F…`, for lines.
[[nodiscard]] std::string describe(const OutboxPackage& package);

} // namespace corvantile
