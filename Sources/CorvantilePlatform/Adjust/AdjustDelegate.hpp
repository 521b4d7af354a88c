#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <optional>
#include <string>

namespace corvantile {

// What the SDK tells, as its server put it; a field that it left out is missing.
struct ADJAttribution {
    std::optional<std::string> trackerToken{}, trackerName{}, network{}, campaign{}, adgroup{}, creative{};
    std::optional<std::string> clickLabel{}, adid{}, costType{};
    std::optional<double> costAmount{};
    std::optional<std::string> costCurrency{};
};

struct ADJEventSuccess {
    std::optional<std::string> message{}, timeStamp{}, adid{}, eventToken{}, callbackId{};
    std::optional<std::string> jsonResponse{}; // the answer's text
};

struct ADJEventFailure {
    std::optional<std::string> message{}, timeStamp{}, adid{}, eventToken{}, callbackId{};
    bool willRetry = false;
    std::optional<std::string> jsonResponse{};
};

struct ADJSessionSuccess {
    std::optional<std::string> message{}, timeStamp{}, adid{}, jsonResponse{};
};

struct ADJSessionFailure {
    std::optional<std::string> message{}, timeStamp{}, adid{};
    bool willRetry = false;
    std::optional<std::string> jsonResponse{};
};

// Who hears what became of what was tracked. Every callback has a harmless default. Threads: main, never
// inside a call of the SDK. An argument may be missing.
class CORVANTILE_API AdjustDelegate : NonCopyable {
public:
    virtual ~AdjustDelegate();

    virtual void adjustAttributionChanged(const std::optional<ADJAttribution>& attribution);
    virtual void adjustEventTrackingSucceeded(const std::optional<ADJEventSuccess>& success);
    virtual void adjustEventTrackingFailed(const std::optional<ADJEventFailure>& failure);
    virtual void adjustSessionTrackingSucceeded(const std::optional<ADJSessionSuccess>& success);
    virtual void adjustSessionTrackingFailed(const std::optional<ADJSessionFailure>& failure);
    // Whether the SDK opens the address. Default: it does not.
    virtual bool adjustDeeplinkResponse(const std::optional<std::string>& deeplink);
    virtual void adjustConversionValueUpdated(const std::optional<int>& conversionValue);
};

} // namespace corvantile
