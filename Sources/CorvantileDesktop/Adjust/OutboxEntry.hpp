#pragma once

#include "CorvantilePlatform/Foundation/Date.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

enum class PackageKind : int { session, event, subscription };

// `refused`: the server has answered with another status than success.
enum class PackageState : int { waiting, sent, refused };

// The result of one attempt to deliver.
struct DeliveryAnswer {
    std::optional<int> status = {}; // of HTTP; missing when no answer came
    std::string text;               // the answer's bytes, or why it is missing; its beginning, if it is long
};

// A package for people.
struct OutboxEntry {
    std::string identifier; // an upper-case UUID, the same with every attempt
    PackageKind kind = PackageKind::event;
    std::string eventToken, revenue, currency, transactionId; // empty where the package has none
    Date created;                                             // whole seconds
    PackageState state = PackageState::waiting;
    int tries = 0;
    std::optional<DeliveryAnswer> lastAnswer = {};
};

// What an outbox file holds, in order, with what was delivered lately.
struct OutboxInspection {
    std::vector<OutboxEntry> packages;
    std::string fault; // why they cannot be read; empty when they can
    std::vector<std::filesystem::path> setAside;
};

} // namespace corvantile
