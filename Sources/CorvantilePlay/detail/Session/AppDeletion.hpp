#pragma once

#include "CorvantilePlay/detail/Text/NearestName.hpp"

#include <filesystem>

namespace corvantile::tool {

struct DeletedApp {
    Names deleted;
    Names kept;
};

// Deletes from a state folder what goes with the app, and nothing else: what outlives it, as the keychain
// does, stays, and so does whatever somebody else has put there. A UsageError when something cannot be
// deleted.
DeletedApp deleteApp(const std::filesystem::path& stateFolder);

// Deletes all that the desktop platform keeps in a state folder, keychain and store too, and returns the
// names. A UsageError, before anything is deleted, when the folder holds something else: it may be no state
// folder at all. One that is missing holds nothing.
Names deleteDevice(const std::filesystem::path& stateFolder);

} // namespace corvantile::tool
