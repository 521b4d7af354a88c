#pragma once

#include "Corvantile/Extension/DatabaseManipulating.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Database/UserPreferenceProtocol.hpp"
#include "Corvantile/RequireService.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"
#include "HostCore/Decoding.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ownapp {

namespace cv = corvantile;

/// A record of the app, which is stored encrypted.
struct Streak {
    static constexpr std::string_view typeName = "Streak";
    std::int64_t launches = 0;

    static Streak decode(const cv::KeyedDecodingContainer& json) { return {json.decodeInteger("launches")}; }
    friend std::string encodeJSON(const Streak& streak) {
        return R"({"launches":)" + std::to_string(streak.launches) + "}";
    }
};

/// The app's own protocol, by which plug-ins find each other.
class StreakPluggable : public virtual cv::PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "StreakPluggable";
    [[nodiscard]] virtual cv::rx::Observable<Streak> streak() = 0;
};

/// Counts launches, and tracks the event `streak` at every `goal`th.
class StreakPlugin final : public StreakPluggable, public std::enable_shared_from_this<StreakPlugin> {
public:
    explicit StreakPlugin(std::uint64_t goal) : goal_(static_cast<std::int64_t>(goal)) {}

    bool didFinishLaunchingWithOptions(cv::UIApplication&, const cv::LaunchOptions&) override {
        const auto preference = cv::requireService<cv::UserPreferenceProtocol>();
        preference->isLoaded().take(1).subscribe([weak = weak_from_this()](bool) {
            if (const auto self = weak.lock()) self->countLaunch();
        });
        return true;
    }
    cv::rx::Observable<Streak> streak() override { return subject_.asObservable(); }

private:
    void countLaunch() {
        const auto preference = cv::requireService<cv::UserPreferenceProtocol>();
        const auto cryptor = std::dynamic_pointer_cast<cv::DatabaseCryptor>(preference);
        preference->asyncOpen([self = shared_from_this(), cryptor](auto& store, const std::string& userID) {
            const auto key = std::string(Streak::typeName) + "_" + userID;
            const auto stored =
                store.template getObject<Streak>(key, cryptor.get(), [](const std::string& json) {
                    return std::optional(cv::decodeJSON<Streak>(json));
                });
            const Streak streak{stored.value_or(Streak{}).launches + 1};
            store.setObject(streak, key, cryptor.get());
            self->publish(streak);
        });
    }
    void publish(const Streak& streak) {
        subject_.onNext(streak);
        if (streak.launches % goal_ != 0) return;
        cv::requireService<cv::AnalyticPluggable>()->track(
            cv::AnalyticEvent("streak", {{"launches", streak.launches}}));
    }

    const std::int64_t goal_;
    const cv::rx::ReplaySubject<Streak> subject_ = cv::rx::ReplaySubject<Streak>::create(1);
};

} // namespace ownapp
