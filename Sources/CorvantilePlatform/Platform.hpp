#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantilePlatform/Process.hpp"

#include <memory>

namespace corvantile {

class AAAttribution;
class Adjust;
class ASIdentifierManager;
class Clock;
class Console;
class Cryptor;
class DispatchQueues;
class HTTPClient;
class Locksmith;
class NetworkReachabilityManagers;
class NSBundle;
class NSUserDefaults;
class SecureRandom;
class SKPaymentQueue;
class StoreRequests;
class UIApplication;
class UIDevice;

// One implementation of everything that the framework calls outside itself. None is ever null.
struct Ports {
    std::shared_ptr<UIApplication> application;
    std::shared_ptr<UIDevice> device;
    std::shared_ptr<NSBundle> mainBundle;
    std::shared_ptr<DispatchQueues> queues;
    std::shared_ptr<Clock> clock;
    std::shared_ptr<Console> console;
    std::shared_ptr<NetworkReachabilityManagers> reachability;
    std::shared_ptr<Locksmith> keychain;
    std::shared_ptr<NSUserDefaults> userDefaults{};
    std::shared_ptr<SecureRandom> random{};
    std::shared_ptr<Cryptor> cryptor{};
    std::shared_ptr<HTTPClient> http{};
    std::shared_ptr<AAAttribution> attribution{};
    std::shared_ptr<ASIdentifierManager> advertising{};
    std::shared_ptr<Adjust> adjust{};
    std::shared_ptr<SKPaymentQueue> paymentQueue{};
    std::shared_ptr<StoreRequests> storeRequests{};
};

// A platform is a process: the ports, the threads that run framework code, and the process's records.
// A final platform installs itself when its construction is complete and ends itself in its destructor;
// both only from outside any queue. One platform is current at a time: the one that was installed last, and
// after its end the one before it.
class CORVANTILE_API Platform : NonCopyable {
public:
    virtual ~Platform();

    // The installed platform; a fatal error when there is none. Threads: any.
    [[nodiscard]] static Platform& current();
    [[nodiscard]] static bool isInstalled();

    [[nodiscard]] const Ports& ports() const { return ports_; }
    [[nodiscard]] Process& process();

protected:
    explicit Platform(Ports ports);

    // Makes this platform the current one, in place of another (two processes in one test take turns).
    void install();

    // Ends the process: `stop`, then the delegate and the process's records are released while the ports
    // still stand, then live plug-ins are counted, then the platform that was installed before is current
    // again. A second call does nothing.
    void end();

    [[nodiscard]] bool hasEnded() const { return process_ == nullptr; }

private:
    // Closes the queues, cancels timers and requests, joins every thread, and drops what is queued, unrun. No
    // framework code runs on a thread of the platform after it.
    virtual void stop() = 0;

    // `count` plug-ins outlived their process: code outside still owns them.
    virtual void reportOutlived(int count) = 0;

    Ports ports_;
    std::unique_ptr<Process> process_;
};

} // namespace corvantile
