#pragma once

#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

// How commands meet the store of the app that runs.
namespace corvantile::tool {

// Fails when the app does not run.
[[nodiscard]] inline LocalStore& storeOf(Host& host) { return host.process().platform().store(); }

// An error of the store is a UsageError.
template <class Act>
auto askStore(Act act) {
    try {
        return act();
    } catch (const NSError& error) {
        throw UsageError(error.localizedDescription());
    }
}

} // namespace corvantile::tool
