#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <optional>
#include <string>
#include <utility>

namespace corvantile::tool {

namespace {

AnalyticEvent makeEvent(const std::string& name, std::optional<EventParameters> parameters) {
    return parameters ? AnalyticEvent(name, std::move(*parameters)) : AnalyticEvent(name);
}

std::shared_ptr<AdjustAnalyticComponent> asAdjust(const Sink& sink) {
    return std::dynamic_pointer_cast<AdjustAnalyticComponent>(sink.component);
}

void track(Host& host, AnalyticPluggable& router, const AnalyticEvent& event,
           const std::optional<Revenue>& revenue) {
    host.reporter().report("host", "track", "tracks " + describeEvent(event, revenue),
                           fieldsOf(event, revenue));
    if (revenue)
        router.track(event, revenue->amount, revenue->currency);
    else
        router.track(event);
}

void runTrack(Host& host, Arguments given) {
    const auto router = host.service<AnalyticPluggable>();
    track(host, *router, makeEvent(given[0].text, parseParameters(given.subspan(1))), std::nullopt);
}

void runRevenue(Host& host, Arguments given) {
    const auto router = host.service<AnalyticPluggable>();
    const Revenue revenue{parseAmount(given[1].text), parseCurrency(given[2].text)};
    track(host, *router, makeEvent(given[0].text, parseParameters(given.subspan(3))), revenue);
}

// As the sink's `ignore` does with all the names at once.
void replaceIgnored(Host& host, AdjustAnalyticComponent& adjust, const std::string& sink, Arguments given) {
    Names names;
    for (const auto& word : given) names.push_back(word.text);
    host.reporter().report("host", "ignore",
                           "tells sink " + sink + " to ignore " + listed(names) +
                               ", and nothing else any more",
                           {{"sink", sink}, {"events", EventValue::List(names.begin(), names.end())}});
    adjust.setIgnoredEventNames(std::move(names));
}

void runIgnore(Host& host, Arguments given) {
    auto& sink = host.process().sink(given[0].text);
    if (const auto adjust = asAdjust(sink)) return replaceIgnored(host, *adjust, sink.name, given.subspan(1));
    for (const auto& word : given.subspan(1)) {
        sink.component->ignore({word.text});
        host.reporter().report("host", "ignore", "tells sink " + sink.name + " to ignore " + word.text,
                               {{"sink", sink.name}, {"event", word.text}});
    }
}

void runFlush(Host& host) {
    host.service<AnalyticPluggable>()->flush();
    host.reporter().report("host", "flush", "asks the router for what it has buffered");
}

const std::vector<std::string>& parameterHelp() {
    static const std::vector<std::string> lines = {
        "A VALUE is true or false, an integer (3), a decimal number (4.99), a date (2024-01-02,",
        "2024-01-02T03:04:05Z), else text; in quotes it is text whatever it looks like.",
        "Only an event with parameters tells its connection_status; {} stands for none of one's own."};
    return lines;
}

} // namespace

std::vector<Command> trackingCommands(Host& host) {
    return {
        {"track", "NAME [KEY=VALUE…]", "track an event", [&host](Arguments given) { runTrack(host, given); },
         parameterHelp()},
        {"revenue", "NAME AMOUNT CURRENCY [KEY=VALUE…]", "track an event that earns: revenue sale 4.99 USD",
         [&host](Arguments given) { runRevenue(host, given); }, parameterHelp()},
        {"register", "SINK", "register a sink of the app description with the router",
         [&host](Arguments given) {
             auto& process = host.process();
             process.registerSink(process.sink(given[0].text));
         }},
        {"ignore",
         "SINK NAME…",
         "add names of events to a sink's list, until the app ends",
         [&host](Arguments given) { runIgnore(host, given); },
         {"The list of an AdjustAnalyticComponent is replaced, by design."}},
        {"flush", "", "ask the router for the events it has buffered (by design it keeps them)",
         [&host](Arguments) { runFlush(host); }},
    };
}

} // namespace corvantile::tool
