#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "CorvantilePlatform/Foundation/NSDecimalNumber.hpp"

#include <optional>
#include <string>

namespace corvantile::tool {

struct Revenue {
    NSDecimalNumber amount;
    std::string currency;
};

// `purchase 4.99 USD connection_status=wifi`: an event as the command that tracks it would write it.
[[nodiscard]] std::string describeEvent(const AnalyticEvent& event,
                                        const std::optional<Revenue>& revenue = {});

// The same for programs: "event", "params" if there are any, "revenue" and "currency" if it carries them.
[[nodiscard]] EventValue::Map fieldsOf(const AnalyticEvent& event,
                                       const std::optional<Revenue>& revenue = {});

} // namespace corvantile::tool
