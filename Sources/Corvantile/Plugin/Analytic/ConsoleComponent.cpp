#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"

#include "Corvantile/Plugin/Analytic/detail/PrettyJSON.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

namespace {

// The doubled minus near the end of the rule is intended: console searches for the frame rely on it.
constexpr std::string_view head =
    "\n<-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+--+->\n[OSTREL LABS] TRACKED EVENT\n\n";
constexpr std::string_view foot = "\n<-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+--+->\n";
static_assert(head.size() == 73 && foot.size() == 44);

EventValue::Map content(const AnalyticEvent& event) {
    EventValue::Map map{{"eventName", event.name}};
    if (event.params) map.emplace("params", *event.params);
    return map;
}

} // namespace

ConsoleComponent::ConsoleComponent() = default;
ConsoleComponent::~ConsoleComponent() = default;

void ConsoleComponent::ignore(std::initializer_list<std::string_view> names) {
    ignoredEventNames_.insert(ignoredEventNames_.end(), names.begin(), names.end());
}

void ConsoleComponent::track(const AnalyticEvent& event) {
    const auto json = prettyJSON(content(event));
    if (!json) return;
    std::string message;
    message.reserve(head.size() + json->size() + foot.size());
    message.append(head).append(*json).append(foot);
    Platform::current().ports().console->debugPrint(message);
}

void ConsoleComponent::track(const AnalyticEvent& event, const NSDecimalNumber&, const std::string&) {
    track(event);
}

void ConsoleComponent::trackIAPSubs(const NSDecimalNumber&, const std::string&, const std::string&,
                                    const std::optional<Date>&, const std::optional<std::string>&) {}

} // namespace corvantile
