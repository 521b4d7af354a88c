#pragma once

#include "CorvantilePlatform/Adjust/Adjust.hpp"
#include "CorvantilePlatform/Adjust/AdjustDelegate.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace corvantile {

class DispatchQueue;

// What the SDK of one process was asked for, call by call. It takes whatever it is given, also before it is
// launched, and sends nothing anywhere. Threads: any.
class CORVANTILE_API RecordingAdjust final : public Adjust {
public:
    struct ConfigMade {
        std::string appToken, environment;
    };
    struct Launched {
        std::shared_ptr<ADJConfig> config;
    };
    struct PushToken {
        std::vector<std::uint8_t> bytes;
    };
    using Call = std::variant<ConfigMade, Launched, ADJEvent, ADJSubscription, PushToken>;

    enum class ConfigAnswer { usual, invalid, none };

    explicit RecordingAdjust(std::shared_ptr<DispatchQueue> mainQueue);
    ~RecordingAdjust() override;

    // What asking for a configuration gives from now on; an invalid one lacks token and environment.
    void setConfigAnswer(ConfigAnswer answer);
    // Whether asking for a subscription gives none from now on.
    void setRefusesSubscriptions(bool refuses);

    // Every call, in order.
    [[nodiscard]] std::vector<Call> calls() const;
    // Those of one kind, such as `callsOf<ADJEvent>()`.
    template <class Kind>
    [[nodiscard]] std::vector<Kind> callsOf() const {
        std::vector<Kind> chosen;
        for (auto& call : calls())
            if (auto* const wanted = std::get_if<Kind>(&call)) chosen.push_back(std::move(*wanted));
        return chosen;
    }

    // Calls the delegate of the first valid configuration that was launched, on main; nothing if it has gone
    // by then: `adjust.callDelegate([](AdjustDelegate& delegate) { delegate.adjust…(…); })`.
    void callDelegate(std::function<void(AdjustDelegate& delegate)> callback);

    [[nodiscard]] std::shared_ptr<ADJConfig> makeConfig(const std::string& appToken,
                                                        const std::string& environment) override;
    [[nodiscard]] std::shared_ptr<ADJSubscription> makeSubscription(const NSDecimalNumber& price,
                                                                    const std::string& currency,
                                                                    const std::string& transactionId,
                                                                    std::string receipt) override;
    void launch(std::shared_ptr<ADJConfig> config) override;
    void send(const ADJEvent& event) override;
    void send(const ADJSubscription& subscription) override;
    void setPushToken(const std::vector<std::uint8_t>& token) override;

private:
    void record(Call call);

    const std::shared_ptr<DispatchQueue> mainQueue_;
    mutable std::mutex mutex_;
    ConfigAnswer configAnswer_ = ConfigAnswer::usual;
    bool refusesSubscriptions_ = false;
    std::weak_ptr<AdjustDelegate> delegate_;
    bool isLaunched_ = false;
    std::vector<Call> calls_;
};

} // namespace corvantile
