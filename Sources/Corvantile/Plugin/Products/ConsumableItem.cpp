#include "Corvantile/Plugin/Products/ConsumableItem.hpp"

#include "Platform/Foundation/NSBundle.hpp"
#include "Platform/Platform.hpp"

namespace corvantile {

std::string ConsumableItem::identifier() const {
    return Platform::current().ports().mainBundle->bundleIdentifier().append(".").append(value_);
}

} // namespace corvantile
