#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <functional>
#include <memory>
#include <string_view>

namespace corvantile {

class DispatchQueue;

enum class NetworkReachabilityStatus {
    unknown,
    notReachable,
    reachableViaEthernetOrWiFi,
    reachableViaCellular
};

// Watches whether one host can be reached, and over which kind of link.
// Threads: any. Ownership: the caller's; its destruction ends the watch.
class CORVANTILE_API NetworkReachabilityManager : NonCopyable {
public:
    using Listener = std::function<void(NetworkReachabilityStatus)>;

    virtual ~NetworkReachabilityManager();

    // Calls `listener` on `queue`, never inside this call, with the present status and then with each change.
    // A second call replaces the listener. False when the platform refuses to watch.
    virtual bool startListening(std::shared_ptr<DispatchQueue> queue, Listener listener) = 0;

    // No delivery begins after it on the listener's queue.
    virtual void stopListening() = 0;
};

// Where watchers come from. Threads: any.
class CORVANTILE_API NetworkReachabilityManagers : NonCopyable {
public:
    virtual ~NetworkReachabilityManagers();

    // Null when the platform refuses the host name.
    [[nodiscard]] virtual std::shared_ptr<NetworkReachabilityManager> make(std::string_view host) = 0;
};

} // namespace corvantile
