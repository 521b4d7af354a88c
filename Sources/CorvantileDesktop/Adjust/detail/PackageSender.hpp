#pragma once

#include <string>

namespace corvantile {

class ADJConfig;
class ASIdentifierManager;
class UIDevice;

// Who sends: what every package says.
struct PackageSender {
    std::string appToken, environment;
    std::string idfa, idfv, systemVersion; // empty: unknown or withheld
};

// The advertising identifier only as far as the configuration lets it be read; the manager may be null.
[[nodiscard]] PackageSender senderOf(const ADJConfig& config, const UIDevice& device,
                                     ASIdentifierManager* advertising);

} // namespace corvantile
