#pragma once

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"

#include <string>

namespace corvantile {

// The event's name and its parameters, without the network status that every event is given.
inline std::string eventLine(const AnalyticEvent& event) {
    auto line = event.name;
    for (const auto& [key, value] : event.params.value_or(EventParameters())) {
        const auto* const plain = value.as<std::string>();
        if (key != AnalyticEvent::connectionStatusKey)
            line += " " + key + "=" + (plain != nullptr ? *plain : value.description());
    }
    return line;
}

} // namespace corvantile
