#include "HostCore/detail/JSONError.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <utility>

namespace corvantile {

void throwJSONError(std::string why) {
    throw NSError("corvantile.json", 1, {{NSError::localizedDescriptionKey, std::move(why)}});
}

} // namespace corvantile
