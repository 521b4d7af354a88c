#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <cstdlib>
#include <system_error>

namespace corvantile::tool {

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "corvantile-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) throw UsageError("a temporary folder cannot be made: " + path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored; // nothing more can be done about what stays behind
    std::filesystem::remove_all(path_, ignored);
}

} // namespace corvantile::tool
