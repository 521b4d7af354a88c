#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"

#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::tool {

class MarkedTransactions;
class Reporter;

// Stands in the delegate's list before the app's router, so that it is found in the router's place. Passes
// everything on, and reports what the router does not: which sinks did not get an event and why,
// and that none got it. Registers no sink of its own, which would change what the router does.
class ObservedRouter final : public AnalyticPluggable {
public:
    ObservedRouter(std::shared_ptr<AnalyticPluggable> router,
                   std::shared_ptr<MarkedTransactions> transactions, Reporter& reporter);
    ~ObservedRouter() override;

    [[nodiscard]] const std::shared_ptr<AnalyticPluggable>& router() const { return router_; }

    // Registers the sink with the router; reports call it by this name.
    void registerSink(const std::string& name, const std::shared_ptr<AnalyticComponent>& sink);

    void track(const AnalyticEvent& event) override;
    void track(const AnalyticEvent& event, const NSDecimalNumber& revenue,
               const std::string& currency) override;
    void registerComponents(std::initializer_list<std::shared_ptr<AnalyticComponent>> components) override;
    void flush() override;
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override;

private:
    struct RegisteredSink {
        std::string name;
        std::shared_ptr<AnalyticComponent> component;
    };
    using Sinks = std::vector<RegisteredSink>;

    [[nodiscard]] Sinks sinks() const;
    void remember(const std::string& name, const std::shared_ptr<AnalyticComponent>& sink);
    template <class Forward>
    void pass(const AnalyticEvent& event, bool hasRevenue, const Forward& forward);
    // Whether a sink got the event; reports of the others why they did not.
    [[nodiscard]] bool explain(const Sinks& sinks, const AnalyticEvent& event, bool hasPrinted) const;
    [[nodiscard]] bool explainDryRun(const Sinks& sinks, const AnalyticEvent& event, bool hasPrinted) const;
    void reportUnprinted(const RegisteredSink& sink, const AnalyticEvent& event) const;
    void reportOf(const RegisteredSink& sink, const char* kind, const std::string& why,
                  const AnalyticEvent& event) const;
    void reportLost(const char* kind, const std::string& why, const AnalyticEvent& event) const;

    const std::shared_ptr<AnalyticPluggable> router_;
    const std::shared_ptr<MarkedTransactions> transactions_;
    Reporter& reporter_;
    mutable std::mutex mutex_;
    Sinks sinks_; // each once, however often it is registered
};

} // namespace corvantile::tool
