#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "HostCore/PluggableApplicationDelegateService.hpp"

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

class AnalyticComponent;

// The entry point for analytics, whatever sinks the host has. Threads: any for tracking.
class CORVANTILE_API AnalyticProtocol : NonCopyable {
public:
    static constexpr std::string_view typeName = "AnalyticProtocol";

    virtual ~AnalyticProtocol();

    virtual void track(const AnalyticEvent& event) = 0;
    virtual void track(const AnalyticEvent& event, const NSDecimalNumber& revenue,
                       const std::string& currency) = 0;
    // Appends sinks; one added twice receives everything twice. A null sink is a fatal
    // error. Threads: one at a time.
    virtual void registerComponents(std::initializer_list<std::shared_ptr<AnalyticComponent>> components) = 0;
    // For the host, once its sinks are registered.
    virtual void flush() = 0;
    // A subscription purchase, for every sink, without any filter.
    virtual void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                              const std::string& transId, const std::optional<Date>& date,
                              const std::optional<std::string>& region) = 0;
};

// The plug-in under which the router is looked up.
class CORVANTILE_API AnalyticPluggable : public virtual PluggableApplicationDelegateService,
                                         public AnalyticProtocol {
public:
    static constexpr std::string_view typeName = "AnalyticPluggable";

    ~AnalyticPluggable() override;
};

} // namespace corvantile
