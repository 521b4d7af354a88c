#include "CorvantilePlay/detail/Session/ObservedRouter.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"
#include "CorvantilePlay/detail/Output/Consoles.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/MarkedTransactions.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace corvantile::tool {

namespace {

// As the router sees it: a derived class is another sink.
bool isConsole(const AnalyticComponent& component) { return typeid(component) == typeid(ConsoleComponent); }

} // namespace

ObservedRouter::ObservedRouter(std::shared_ptr<AnalyticPluggable> router,
                               std::shared_ptr<MarkedTransactions> transactions, Reporter& reporter)
    : router_(std::move(router)), transactions_(std::move(transactions)), reporter_(reporter) {}

ObservedRouter::~ObservedRouter() = default;

void ObservedRouter::registerSink(const std::string& name, const std::shared_ptr<AnalyticComponent>& sink) {
    remember(name, sink);
    router_->registerComponents({sink});
}

void ObservedRouter::registerComponents(
    std::initializer_list<std::shared_ptr<AnalyticComponent>> components) {
    for (const auto& component : components) remember("a sink of a plug-in", component);
    router_->registerComponents(components);
}

void ObservedRouter::remember(const std::string& name, const std::shared_ptr<AnalyticComponent>& sink) {
    const std::lock_guard lock(mutex_);
    const auto isSame = [&](const RegisteredSink& known) { return known.component == sink; };
    if (std::none_of(sinks_.begin(), sinks_.end(), isSame)) sinks_.push_back({name, sink});
}

ObservedRouter::Sinks ObservedRouter::sinks() const {
    const std::lock_guard lock(mutex_);
    return sinks_;
}

void ObservedRouter::track(const AnalyticEvent& event) {
    pass(event, false, [&] { router_->track(event); });
}

void ObservedRouter::track(const AnalyticEvent& event, const NSDecimalNumber& revenue,
                           const std::string& currency) {
    pass(event, true, [&] { router_->track(event, revenue, currency); });
}

template <class Forward>
void ObservedRouter::pass(const AnalyticEvent& event, bool hasRevenue, const Forward& forward) {
    const auto registered = sinks();
    const auto printed = ReportingConsole::eventsOfThisThread();
    forward();
    const bool hasPrinted = ReportingConsole::eventsOfThisThread() != printed;
    const bool isReceived = explain(registered, event, hasPrinted);
    transactions_->addEvent(isReceived);
    if (isReceived) return;
    if (registered.empty())
        reportLost("buffered",
                   "no sink is registered: the router keeps " + event.name +
                       (hasRevenue ? " without its revenue" : "") + ", and nothing will bring it back",
                   event);
    else
        reportLost("lost", "no sink got " + event.name, event);
}

bool ObservedRouter::explain(const Sinks& sinks, const AnalyticEvent& event, bool hasPrinted) const {
    if (Corvantile::dryRun()) return explainDryRun(sinks, event, hasPrinted);
    bool isReceived = false;
    for (const auto& sink : sinks) {
        const bool accepts = sink.component->shouldTrack(event);
        isReceived = isReceived || accepts;
        if (!accepts)
            reportOf(sink, "ignored", "ignores " + event.name + ": it is on its list", event);
        else if (isConsole(*sink.component) && !hasPrinted)
            reportUnprinted(sink, event);
    }
    return isReceived;
}

bool ObservedRouter::explainDryRun(const Sinks& sinks, const AnalyticEvent& event, bool hasPrinted) const {
    bool isReceived = false;
    for (const auto& sink : sinks) {
        if (isReceived || !isConsole(*sink.component)) {
            reportOf(sink, "silent", "is passed over: dry run", event);
            continue;
        }
        isReceived = true;
        if (!hasPrinted) reportUnprinted(sink, event);
    }
    return isReceived;
}

void ObservedRouter::flush() { router_->flush(); }

void ObservedRouter::trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                                  const std::string& transId, const std::optional<Date>& date,
                                  const std::optional<std::string>& region) {
    const bool isReceived = !sinks().empty();
    router_->trackIAPSubs(price, currency, transId, date, region);
    transactions_->addEvent(isReceived);
    if (!isReceived)
        reporter_.report("router", "lost",
                         "no sink is registered: the subscription report of " + transId + " is lost",
                         {{"transaction", transId}});
}

void ObservedRouter::reportUnprinted(const RegisteredSink& sink, const AnalyticEvent& event) const {
    reportOf(sink, "silent",
             "cannot print " + event.name + ": JSON holds no date, nor text that is not UTF-8", event);
}

void ObservedRouter::reportOf(const RegisteredSink& sink, const char* kind, const std::string& why,
                              const AnalyticEvent& event) const {
    auto fields = fieldsOf(event);
    fields.emplace("sink", sink.name);
    reporter_.report("sink", kind, sink.name + " " + why, std::move(fields));
}

void ObservedRouter::reportLost(const char* kind, const std::string& why, const AnalyticEvent& event) const {
    reporter_.report("router", kind, why, fieldsOf(event));
}

} // namespace corvantile::tool
