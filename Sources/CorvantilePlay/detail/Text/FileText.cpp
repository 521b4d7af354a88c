#include "CorvantilePlay/detail/Text/FileText.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace corvantile::tool {

std::string readFileText(const std::filesystem::path& file, std::string_view expected) {
    std::error_code ignored;
    const bool isFolder = std::filesystem::is_directory(file, ignored);
    std::ifstream stream(file, std::ios::binary);
    if (stream.is_open() && !isFolder) return {std::istreambuf_iterator<char>(stream), {}};
    throw UsageError(file.string() + ": expected " + std::string(expected) + ", but it cannot be read: " +
                     std::generic_category().message(isFolder ? EISDIR : errno));
}

} // namespace corvantile::tool
