#pragma once

#include <filesystem>
#include <string>

namespace corvantile::tool {

// A fresh empty folder that goes with this. A UsageError when none can be made.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] std::filesystem::path path() const { return path_; }

private:
    std::string path_;
};

} // namespace corvantile::tool
