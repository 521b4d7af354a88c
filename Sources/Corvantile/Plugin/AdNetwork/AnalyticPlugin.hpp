#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/DisposableSlot.hpp"

#include <atomic>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile {

class EventBuffer;

// The router: takes each event to the registered sinks whose `shouldTrack` accepts it, first registered
// first. In a dry run only the first ConsoleComponent hears of it, unasked; while no sink is registered the
// event is buffered, its revenue lost. Sinks are chosen before the first is called, and may call the router
// again or release it: it stays until the call returns. Held by shared_ptr, as plug-ins are.
class CORVANTILE_API AnalyticPlugin final : public AnalyticPluggable,
                                            public std::enable_shared_from_this<AnalyticPlugin> {
public:
    AnalyticPlugin();
    ~AnalyticPlugin() override;

    void track(const AnalyticEvent& event) override;
    void track(const AnalyticEvent& event, const NSDecimalNumber& revenue,
               const std::string& currency) override;
    void registerComponents(std::initializer_list<std::shared_ptr<AnalyticComponent>> components) override;
    // Subscribes to the buffered events, but delivers none of them: the subscription is to a connectable
    // stream that is left unconnected.
    void flush() override;
    // Not buffered: with no sink registered it is lost.
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override;

private:
    using Services = std::vector<std::shared_ptr<AnalyticComponent>>;

    // For a sink that releases the router inside a call, and with it all sinks.
    [[nodiscard]] std::shared_ptr<const AnalyticPlugin> keptAlive() const { return weak_from_this().lock(); }
    [[nodiscard]] const Services& services() const { return *services_.load(std::memory_order_acquire); }

    template <class Deliver>
    void route(const AnalyticEvent& event, const Deliver& deliver);
    void buffer(const AnalyticEvent& event);

    // Every list there has been, the last one in use; none is ever changed. A former one stays, since a
    // delivery on another thread may still walk it: tracking needs no lock.
    std::vector<std::unique_ptr<const Services>> lists_;
    std::atomic<const Services*> services_;
    rx::DisposableSlot disposable_;
    const std::unique_ptr<EventBuffer> events_;
};

} // namespace corvantile
