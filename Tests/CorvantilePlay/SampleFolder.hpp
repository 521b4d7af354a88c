#pragma once

#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <fstream>

namespace corvantile::tool {

// An app's folder whose files a test writes, and a state folder beside it.
class SampleFolder {
public:
    [[nodiscard]] std::filesystem::path app() const { return folder_.path(); }
    [[nodiscard]] std::filesystem::path state() const { return folder_.path() / "state"; }

    std::filesystem::path write(const std::string& name, const std::string& text) const {
        std::ofstream(app() / name) << text;
        return app() / name;
    }

private:
    TemporaryFolder folder_;
};

} // namespace corvantile::tool
