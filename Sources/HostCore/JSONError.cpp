#include "HostCore/JSONError.hpp"

#include "Platform/Foundation/NSError.hpp"

#include <utility>

namespace corvantile {

void throwJSONError(std::string why) {
    throw NSError("corvantile.json", 1, {{NSError::localizedDescriptionKey, std::move(why)}});
}

} // namespace corvantile
