#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>

namespace corvantile {

// Where the attribution SDK delivers. Its packages wait in the state folder until they can be.
struct AdjustOptions {
    // `https://host`, before `/session`, `/event` and `/v2/purchase`. Empty: what the environment variable
    // CORVANTILE_ADJUST_ENDPOINT says; without that either, packages stay.
    std::string endpoint = {};

    // What the server knows its client by. Empty: CORVANTILE_ADJUST_TOKEN; without that either, none is sent.
    std::string bearerToken = {};

    // Packages stay until `OutboxAdjust::setOnline`.
    bool isOffline = false;
};

// With what the environment says in place of what is empty, and no slash at the endpoint's end.
[[nodiscard]] CORVANTILE_API AdjustOptions withEnvironment(AdjustOptions options);

} // namespace corvantile
