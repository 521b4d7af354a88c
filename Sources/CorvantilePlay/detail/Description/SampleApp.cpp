#include "CorvantilePlay/detail/Description/SampleApp.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <system_error>

namespace corvantile::tool {

std::filesystem::path sampleAppFolder() {
    std::error_code ignored;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", ignored);
    for (auto folder = executable.parent_path();; folder = folder.parent_path()) {
        for (const char* const place : {"SampleApp", "share/corvantile/SampleApp"})
            if (std::filesystem::exists(folder / place / "app.json", ignored)) return folder / place;
        if (folder == folder.parent_path()) break;
    }
    throw UsageError("the sample app is not beside the tool; name an app: --app FOLDER");
}

AppDescription readApp(const std::filesystem::path& folder) {
    return readAppDescription(folder.empty() ? sampleAppFolder() : folder, frameworkRegistry());
}

} // namespace corvantile::tool
