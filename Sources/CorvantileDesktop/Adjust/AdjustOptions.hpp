#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <string>

namespace corvantile {

// Where the attribution SDK delivers. Its packages wait in the state folder until they can be.
struct AdjustOptions {
    // `https://host`, before `/session`, `/event` and `/v2/purchase`. Empty: the environment variable
    // CORVANTILE_ADJUST_ENDPOINT; without that either, packages stay.
    std::string endpoint = {};

    // Authorizes the client. Empty: CORVANTILE_ADJUST_TOKEN; without that either, none is sent.
    std::string bearerToken = {};

    // Packages stay until `OutboxAdjust::setOnline`.
    bool isOffline = false;
};

// Empty fields are replaced by the environment's values; the endpoint loses slashes at its end.
[[nodiscard]] CORVANTILE_API AdjustOptions withEnvironment(AdjustOptions options);

} // namespace corvantile
