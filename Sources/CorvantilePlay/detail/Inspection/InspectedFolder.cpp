#include "CorvantileDesktop/DesktopOptions.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Inspection/Inspect.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <system_error>

namespace corvantile::tool {

namespace {

[[noreturn]] void fail(const std::filesystem::path& folder) {
    std::error_code ignored; // a folder that we may not look at is as good as missing
    throw UsageError(
        folder.string() + ": expected an app's state folder, but " +
        (std::filesystem::exists(folder, ignored) ? "this is no folder" : "there is nothing of that name") +
        "; play makes one, --state FOLDER names another, --app FOLDER another app");
}

} // namespace

std::filesystem::path inspectedFolder(const InspectOptions& options, const PlayRegistry& registry) {
    auto folder = options.state;
    if (folder.empty()) folder = defaultStateFolder(readApp(options.app, registry).bundleIdentifier);
    std::error_code ignored; // see above
    if (!std::filesystem::is_directory(folder, ignored)) fail(folder);
    return folder;
}

} // namespace corvantile::tool
