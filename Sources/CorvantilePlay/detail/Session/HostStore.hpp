#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

// How commands meet the store of the app that runs.
namespace corvantile::tool {

class Host;

// Refused when the app does not run.
[[nodiscard]] LocalStore& storeOf(Host& host);

// What the store refuses is refused.
template <class Act>
auto askStore(Act act) {
    try {
        return act();
    } catch (const NSError& error) {
        throw UsageError(error.localizedDescription());
    }
}

} // namespace corvantile::tool
