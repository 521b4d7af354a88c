#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"
#include "Corvantile/Plugin/Analytic/detail/PrintItems.hpp"
#include "CorvantilePlatform/Adjust/Adjust.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <utility>

namespace corvantile {

namespace {

using EventTokens = AdjustAnalyticComponent::EventTokens;

EventTokens decodeTokens(std::string_view json) {
    EventTokens tokens;
    JSONDecoder::decodeArray(json, [&](const KeyedDecodingContainer& row) {
        auto event = AdjustEvent::decode(row);
        tokens.insert_or_assign(std::move(event.name), std::move(event.token));
    });
    return tokens;
}

// A fixed text that log searches rely on, not a source position.
constexpr int tokenFileErrorLine = 43;

EventTokens loadTokens(std::string_view name) {
    try {
        if (const auto file = NSBundle::main()->resource(name, "json")) return decodeTokens(*file);
    } catch (const NSError&) {
        // An unreadable file ends the process with the same message as a missing one.
    }
    fatalErrorAt("AdjustAnalyticComponent", tokenFileErrorLine, "Fail to load event file");
}

} // namespace

AdjustEvent AdjustEvent::decode(const KeyedDecodingContainer& container) {
    return {container.decodeString("token"), container.decodeString("name")};
}

std::string encodeJSON(const AdjustEvent& event) {
    return recordjson::write({{"token", event.token}, {"name", event.name}});
}

AdjustAnalyticComponent::AdjustAnalyticComponent(std::string_view eventTokenBundleJsonName,
                                                 std::vector<std::string> ignoreEventNames)
    : AdjustAnalyticComponent(loadTokens(eventTokenBundleJsonName), std::move(ignoreEventNames)) {}

AdjustAnalyticComponent::AdjustAnalyticComponent(EventTokens eventTokenMap,
                                                 std::vector<std::string> ignoredEventNames)
    : ignoredEventNames_(std::move(ignoredEventNames)), events_(std::move(eventTokenMap)) {}

AdjustAnalyticComponent::~AdjustAnalyticComponent() = default;

void AdjustAnalyticComponent::setEvents(EventTokens events) { events_ = std::move(events); }

void AdjustAnalyticComponent::setIgnoredEventNames(std::vector<std::string> names) {
    ignoredEventNames_ = std::move(names);
}

void AdjustAnalyticComponent::ignore(std::initializer_list<std::string_view> names) {
    // Not in place: the names may be views of those that they replace.
    ignoredEventNames_ = std::vector<std::string>(names.begin(), names.end());
}

void AdjustAnalyticComponent::track(const AnalyticEvent& event) {
    if (const auto adjustEvent = createAdjustEvent(event)) Adjust::trackEvent(*adjustEvent);
}

void AdjustAnalyticComponent::track(const AnalyticEvent& event, const NSDecimalNumber& with,
                                    const std::string& currency) {
    auto adjustEvent = createAdjustEvent(event);
    if (!adjustEvent) return;
    adjustEvent->setRevenue(with.doubleValue(), currency);
    Adjust::trackEvent(*adjustEvent);
}

std::optional<ADJEvent> AdjustAnalyticComponent::createAdjustEvent(const AnalyticEvent& event) const {
    const auto found = events_.find(event.name);
    if (found == events_.end()) {
        printItems({"Adjust --- not found " + event.name});
        return std::nullopt;
    }
    printItems({"Adjust --- tracked " + event.name + " - " + found->second});
    return ADJEvent(found->second);
}

void AdjustAnalyticComponent::trackIAPSubs(const NSDecimalNumber& price, const std::string& currency,
                                           const std::string& transId, const std::optional<Date>& date,
                                           const std::optional<std::string>& region) {
    auto receipt = NSBundle::main()->appStoreReceipt();
    if (!receipt || receipt->empty()) return;
    const auto subscription = ADJSubscription::make(price, currency, transId, std::move(*receipt));
    if (subscription && date) subscription->setTransactionDate(*date);
    printItems({"Adjust IAP track--- ", subscription ? subscription->price().description() : "",
                subscription ? subscription->currency() : "",
                subscription ? subscription->transactionId() : "", date ? describe(*date) : "",
                region.value_or("")});
    if (!subscription) return;
    if (region) subscription->setSalesRegion(*region);
    Adjust::trackSubscription(*subscription);
}

} // namespace corvantile
