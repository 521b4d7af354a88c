#pragma once

#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "Fuzz/Input.hpp"

namespace corvantile::fuzz {

// What is read stays the same through its own text; what cannot be read says why.
template <class Record>
int roundTrip(const std::uint8_t* data, std::size_t size) {
    try {
        const auto record = decodeJSON<Record>(text(data, size));
        if (!(decodeJSON<Record>(encodeJSON(record)) == record)) __builtin_trap();
    } catch (const NSError& error) {
        if (error.localizedDescription().empty()) __builtin_trap();
    }
    return 0;
}

} // namespace corvantile::fuzz
