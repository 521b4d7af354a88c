#pragma once

#include "CorvantileDesktop/detail/Files/Descriptor.hpp"

#include <filesystem>
#include <string>

namespace corvantile::tool {

// A fresh empty folder that goes with this, or, where a kill left it behind, with the next of its kind. A
// UsageError when none can be made.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] std::filesystem::path path() const { return path_; }

private:
    std::string path_;
    Descriptor lock_; // held as long as somebody uses the folder: no state folder, which an app locks
};

} // namespace corvantile::tool
