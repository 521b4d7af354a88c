#pragma once

#include "DesktopPlatform/DesktopPlatform.hpp"
#include "DesktopPlatform/Network/NetlinkReachabilityManager.hpp"
#include "DesktopPlatform/Queues/Executors.hpp"

#include <memory>

namespace corvantile {

class CurlHTTPClient;
class SQLiteUserDefaults;

// The ports under their own types, for the platform itself.
struct DesktopPlatform::Parts {
    Parts();
    ~Parts();

    // Makes everything that the options ask for. Once.
    [[nodiscard]] Ports ports(const DesktopOptions& options);

    const std::shared_ptr<Executors> executors;
    const std::shared_ptr<NetlinkReachabilityManagers> reachability;
    std::shared_ptr<Vault> vault;
    std::shared_ptr<SQLiteUserDefaults> userDefaults;
    std::shared_ptr<HTTPRoutes> httpRoutes;
    std::shared_ptr<CurlHTTPClient> http;
    std::shared_ptr<LocalAds> ads;
    std::shared_ptr<OutboxAdjust> adjust;
    std::shared_ptr<LocalStore> store;

private:
    void addStore(Ports& made, const DesktopOptions& options);
};

} // namespace corvantile
