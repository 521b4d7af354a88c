#include "CorvantilePlay/detail/Text/FileText.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace corvantile::tool {

namespace {

[[noreturn]] void failReadOfFile(const std::filesystem::path& file, std::string_view expected,
                                 const std::string& why) {
    throw UsageError(file.string() + ": expected " + std::string(expected) +
                     ", but it cannot be read: " + why);
}

} // namespace

Descriptor openFile(const std::filesystem::path& file, std::string_view expected) {
    Descriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened) failReadOfFile(file, expected, std::generic_category().message(errno));
    struct stat status {};
    if (::fstat(opened.value(), &status) == 0 && S_ISDIR(status.st_mode))
        failReadOfFile(file, expected, std::generic_category().message(EISDIR));
    return opened;
}

std::string readFileText(const std::filesystem::path& file, std::string_view expected) {
    const auto opened = openFile(file, expected);
    std::string text;
    std::array<char, 64 * 1024> bytes;
    for (;;) {
        const auto count = ::read(opened.value(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) failReadOfFile(file, expected, std::generic_category().message(errno));
        if (count == 0) return text;
        text.append(bytes.data(), static_cast<std::size_t>(count));
        if (text.size() > longestFile) failReadOfFile(file, expected, "it has more than 64 megabytes");
    }
}

} // namespace corvantile::tool
