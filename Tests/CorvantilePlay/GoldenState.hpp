#pragma once

#include <filesystem>

namespace corvantile::tool {

// Puts a state folder at `place` as an earlier version left it; such a folder is never made again. state-1
// was closed in order; state-2, the sample app's, was left by a kill, so the logs hold all rows. A checkout
// forgets who may open what, so that is set.
inline void copyGoldenState(const std::filesystem::path& place, const char* name = "state-1") {
    namespace fs = std::filesystem;
    fs::copy(fs::path(CORVANTILE_GOLDEN_FOLDER) / name, place, fs::copy_options::recursive);
    fs::permissions(place, fs::perms::owner_all);
    for (const auto& entry : fs::recursive_directory_iterator(place))
        fs::permissions(entry, entry.is_directory() ? fs::perms::owner_all
                                                    : fs::perms::owner_read | fs::perms::owner_write);
}

} // namespace corvantile::tool
