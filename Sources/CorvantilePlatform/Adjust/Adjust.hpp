#pragma once

#include "CorvantilePlatform/Adjust/ADJConfig.hpp"
#include "CorvantilePlatform/Adjust/ADJEvent.hpp"
#include "CorvantilePlatform/Adjust/ADJSubscription.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace corvantile {

// The attribution SDK. What it refuses is reported on the console only: no call fails.
// What it accepts is safe once the call has returned; it leaves for the server in its own time, in order.
// Before `launch`, events and subscriptions are refused while the push token is kept.
// Threads: any; the delegate's callbacks come on main.
class CORVANTILE_API Adjust : NonCopyable {
public:
    virtual ~Adjust();

    // May answer null, or an invalid configuration.
    [[nodiscard]] virtual std::shared_ptr<ADJConfig> makeConfig(const std::string& appToken,
                                                                const std::string& environment) = 0;
    // May answer null. The default makes one of what is given.
    [[nodiscard]] virtual std::shared_ptr<ADJSubscription> makeSubscription(const NSDecimalNumber& price,
                                                                            const std::string& currency,
                                                                            const std::string& transactionId,
                                                                            std::string receipt);

    // The first valid configuration starts the SDK; null, an invalid one and any later one are refused.
    virtual void launch(std::shared_ptr<ADJConfig> config) = 0;
    virtual void send(const ADJEvent& event) = 0;
    virtual void send(const ADJSubscription& subscription) = 0;
    virtual void setPushToken(const std::vector<std::uint8_t>& token) = 0;

    // The same four, on the installed platform.
    static void appDidLaunch(std::shared_ptr<ADJConfig> config);
    static void trackEvent(const ADJEvent& event);
    static void trackSubscription(const ADJSubscription& subscription);
    static void setDeviceToken(const std::vector<std::uint8_t>& token);
};

} // namespace corvantile
