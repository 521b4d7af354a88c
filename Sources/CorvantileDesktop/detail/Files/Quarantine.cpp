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

// False when it is not there, or an earlier one has failed.
bool rename(const fs::path& file, const fs::path& name, std::string_view suffix, std::error_code& error) {
    if (error || !isThere(with(file, suffix))) return false;
    fs::rename(with(file, suffix), with(name, suffix), error);
    return true;
}

} // namespace

fs::path nextQuarantineName(const fs::path& file, std::initializer_list<std::string_view> suffixes) {
    int number = 1;
    while (isTaken(numbered(file, number), suffixes)) ++number;
    return numbered(file, number);
}

// The file itself goes first: a log that went before would be missing if a killed process came no further.
std::optional<fs::path> quarantine(const fs::path& file, std::initializer_list<std::string_view> suffixes) {
    const auto name = nextQuarantineName(file, suffixes);
    std::error_code error;
    bool isAnyThere = rename(file, name, "", error);
    for (const auto suffix : suffixes) isAnyThere |= rename(file, name, suffix, error);
    if (error || !isAnyThere) return std::nullopt;
    return name;
}

std::optional<fs::path> finishQuarantine(const fs::path& file,
                                         std::initializer_list<std::string_view> suffixes) {
    int number = 1;
    while (isTaken(numbered(file, number), suffixes)) ++number;
    const auto name = numbered(file, number - 1);
    if (!isThere(name)) return std::nullopt;
    std::error_code error;
    for (const auto suffix : suffixes)
        if (!isThere(with(name, suffix))) rename(file, name, suffix, error);
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
