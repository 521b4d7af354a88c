#pragma once

#include "Tools/corvantile/NearestName.hpp"

#include <filesystem>

namespace corvantile::tool {

struct DeletedApp {
    Names deleted;
    Names kept;
};

// Deletes from a state folder what goes with the app, and nothing else: what outlives it, as the keychain
// does, stays, and so does whatever somebody else has put there. A Refusal when something cannot be deleted.
DeletedApp deleteApp(const std::filesystem::path& stateFolder);

} // namespace corvantile::tool
