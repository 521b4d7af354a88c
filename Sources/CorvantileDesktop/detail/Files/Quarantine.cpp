#include "CorvantileDesktop/detail/Files/Quarantine.hpp"

#include <algorithm>
#include <string>
#include <system_error>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

fs::path with(fs::path file, std::string_view suffix) { return file += suffix; }

fs::path numbered(const fs::path& file, int number) {
    return with(file, ".set-aside-" + std::to_string(number));
}

bool isThere(const fs::path& file) {
    std::error_code error;
    return fs::symlink_status(file, error).type() != fs::file_type::not_found;
}

bool isTaken(const fs::path& name, std::initializer_list<std::string_view> suffixes) {
    for (const auto suffix : suffixes)
        if (isThere(with(name, suffix))) return true;
    return isThere(name);
}

} // namespace

std::optional<fs::path> quarantine(const fs::path& file, std::initializer_list<std::string_view> suffixes) {
    int number = 1;
    while (isTaken(numbered(file, number), suffixes)) ++number;
    const auto name = numbered(file, number);
    std::error_code error;
    bool isAnyThere = false;
    const auto rename = [&](std::string_view suffix) {
        if (error || !isThere(with(file, suffix))) return;
        fs::rename(with(file, suffix), with(name, suffix), error);
        isAnyThere = true;
    };
    // The file itself goes last: until it has gone, another attempt finds everything in its place.
    for (const auto suffix : suffixes) rename(suffix);
    rename("");
    if (error || !isAnyThere) return std::nullopt;
    return name;
}

std::vector<fs::path> quarantinedFiles(const fs::path& file) {
    const auto beginning = file.filename().string() + ".set-aside-";
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator at(file.parent_path(), error), end; !error && at != end; at.increment(error))
        if (at->path().filename().string().starts_with(beginning)) found.push_back(at->path());
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace corvantile
