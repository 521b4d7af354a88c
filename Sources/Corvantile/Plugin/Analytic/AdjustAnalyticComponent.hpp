#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticComponent.hpp"
#include "CorvantilePlatform/Adjust/ADJEvent.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "HostCore/Decoding.hpp"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace corvantile {

// One row of the event-token file: the framework's name for an event, and the SDK's token for it. The name
// alone counts: two rows with the same one are equal, whatever their tokens.
struct CORVANTILE_API AdjustEvent {
    static constexpr std::string_view typeName = "AdjustEvent";

    std::string token;
    std::string name;

    [[nodiscard]] static AdjustEvent decode(const KeyedDecodingContainer& container);

    [[nodiscard]] bool operator==(const AdjustEvent& other) const { return name == other.name; }
};

[[nodiscard]] CORVANTILE_API std::string encodeJSON(const AdjustEvent& event);

// Sends events to the attribution SDK, which knows them by token. An event without a token is reported
// on the console and dropped; of the others the SDK gets the token and the revenue, never the parameters.
// AdjustPlugin starts the SDK. Threads: the caller's. Neither table nor list is guarded: change
// them before events flow.
class CORVANTILE_API AdjustAnalyticComponent : public AnalyticComponent {
public:
    struct NameHash {
        using is_transparent = void;
        // Not noexcept: for one of the standard libraries that is what makes a table keep its hashes.
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>{}(name); }
    };
    // Tokens by the names of events; looking one up needs no string of its own.
    using EventTokens = std::unordered_map<std::string, std::string, NameHash, std::equal_to<>>;

    // The table is read from the main bundle's file of that name, without its ending `.json`: an array of
    // objects with the texts "token" and "name". Of two with one name the later counts. A file that is
    // missing or anything else ends the process.
    explicit AdjustAnalyticComponent(std::string_view eventTokenBundleJsonName,
                                     std::vector<std::string> ignoreEventNames = {});
    explicit AdjustAnalyticComponent(EventTokens eventTokenMap,
                                     std::vector<std::string> ignoredEventNames = {});
    ~AdjustAnalyticComponent() override;

    [[nodiscard]] const EventTokens& events() const { return events_; }
    void setEvents(EventTokens events);

    [[nodiscard]] const std::vector<std::string>& ignoredEventNames() const override {
        return ignoredEventNames_;
    }
    void setIgnoredEventNames(std::vector<std::string> names);
    // Unlike other sinks this one replaces its list.
    void ignore(std::initializer_list<std::string_view> names) override;

    void track(const AnalyticEvent& event) override;
    void track(const AnalyticEvent& event, const NSDecimalNumber& with, const std::string& currency) override;
    // Sends the store's current receipt along. Without a receipt, or with an empty one, sends and prints
    // nothing.
    using AnalyticComponent::trackIAPSubs;
    void trackIAPSubs(const NSDecimalNumber& price, const std::string& currency, const std::string& transId,
                      const std::optional<Date>& date, const std::optional<std::string>& region) override;

private:
    // Reports on the console whether the event is sent.
    [[nodiscard]] std::optional<ADJEvent> createAdjustEvent(const AnalyticEvent& event) const;

    std::vector<std::string> ignoredEventNames_;
    EventTokens events_;
};

} // namespace corvantile

template <>
struct std::hash<corvantile::AdjustEvent> {
    std::size_t operator()(const corvantile::AdjustEvent& event) const noexcept {
        return std::hash<std::string>{}(event.name);
    }
};
