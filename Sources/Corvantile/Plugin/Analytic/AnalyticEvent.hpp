#pragma once

#include "Corvantile/Plugin/Analytic/EventValue.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

using EventParameters = EventValue::Map;

// What happened, as the analytics back ends receive it. Threads: a value, like any other.
struct CORVANTILE_API AnalyticEvent {
    // The parameter that tells the network status of the moment at which an event was made.
    static constexpr std::string_view connectionStatusKey = "connection_status";

    std::string name;
    // Absent is not the same as empty: only parameters that are there tell the connection status.
    std::optional<EventParameters> params;

    // Without parameters.
    explicit AnalyticEvent(std::string name);
    // With the caller's parameters, `{}` for none of one's own, and the connection status, which takes the
    // place of what the caller put there. It is looked up here and nowhere else: a copy tells the same one.
    AnalyticEvent(std::string name, EventParameters params);

    [[nodiscard]] bool operator==(const AnalyticEvent& other) const = default;
};

[[nodiscard]] CORVANTILE_API std::string describe(const AnalyticEvent& event);

} // namespace corvantile
