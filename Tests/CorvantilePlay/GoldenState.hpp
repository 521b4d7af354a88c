#pragma once

#include <filesystem>

namespace corvantile::tool {

// Puts a state folder at `place` as version 1 left it, never to be made anew. A checkout forgets who may
// open what, so that is set.
inline void copyGoldenState(const std::filesystem::path& place) {
    namespace fs = std::filesystem;
    fs::copy(fs::path(CORVANTILE_GOLDEN_FOLDER) / "state-1", place, fs::copy_options::recursive);
    fs::permissions(place, fs::perms::owner_all);
    for (const auto& entry : fs::recursive_directory_iterator(place))
        fs::permissions(entry, entry.is_directory() ? fs::perms::owner_all
                                                    : fs::perms::owner_read | fs::perms::owner_write);
}

} // namespace corvantile::tool
