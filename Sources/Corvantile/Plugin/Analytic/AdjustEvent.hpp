#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "HostCore/Decoding.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

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

} // namespace corvantile

template <>
struct std::hash<corvantile::AdjustEvent> {
    std::size_t operator()(const corvantile::AdjustEvent& event) const noexcept {
        return std::hash<std::string>{}(event.name);
    }
};
