#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

// A network that does what the test says. A new process finds itself on Wi-Fi. Threads: any.
class CORVANTILE_API ScriptedReachability final : public NetworkReachabilityManagers {
public:
    ScriptedReachability();
    ~ScriptedReachability() override;

    // Posts the status to every listener's queue, unless it is the present one already.
    void set(NetworkReachabilityStatus status);

    // Watchers of `host` are refused from now on. The empty name always is.
    void refuse(std::string host);

    // The hosts that watchers were asked for, in order, refused ones as well.
    [[nodiscard]] std::vector<std::string> hosts() const;

    // Forgets every listener: the process ends.
    void close();

    [[nodiscard]] std::shared_ptr<NetworkReachabilityManager> make(std::string_view host) override;

private:
    struct Network;
    class Manager;

    const std::shared_ptr<Network> network_;
    mutable std::mutex mutex_;
    std::set<std::string> refused_;
    std::vector<std::string> hosts_;
};

} // namespace corvantile
