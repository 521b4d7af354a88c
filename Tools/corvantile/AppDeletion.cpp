#include "Tools/corvantile/AppDeletion.hpp"

#include "Tools/corvantile/Refusal.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>

namespace corvantile::tool {

namespace {

namespace fs = std::filesystem;

// What the desktop platform keeps for the app alone; logs and files set aside have longer names. What the
// store remembers stays: the store is not on the device, its receipt is.
constexpr std::array<std::string_view, 4> beginnings{"user-defaults.sqlite", "outbox.sqlite",
                                                     "vendor-identifier", "receipt"};

bool goesWithTheApp(const std::string& name) {
    return name == "receipt" ||
           std::any_of(beginnings.begin(), beginnings.end(),
                       [&](std::string_view beginning) { return name.starts_with(beginning); });
}

} // namespace

DeletedApp deleteApp(const fs::path& stateFolder) {
    DeletedApp app;
    std::error_code error;
    for (fs::directory_iterator at(stateFolder, error), end; !error && at != end; at.increment(error)) {
        const auto name = at->path().filename().string();
        (goesWithTheApp(name) ? app.deleted : app.kept).push_back(name);
    }
    std::sort(app.deleted.begin(), app.deleted.end());
    std::sort(app.kept.begin(), app.kept.end());
    if (error == std::errc::no_such_file_or_directory) return {};
    for (const auto& name : app.deleted)
        if (!error) fs::remove(stateFolder / name, error);
    if (error) throw Refusal(stateFolder.string() + ": the app cannot be deleted: " + error.message());
    return app;
}

} // namespace corvantile::tool
