#include "Corvantile/Plugin/Products/ConsumableItem.hpp"

#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

std::string ConsumableItem::identifier() const {
    return Platform::current().ports().mainBundle->bundleIdentifier().append(".").append(value_);
}

} // namespace corvantile
