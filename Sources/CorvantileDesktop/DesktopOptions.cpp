#include "CorvantileDesktop/DesktopOptions.hpp"

#include <array>
#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

namespace corvantile {

namespace {

// A relative path would follow the working folder about: it counts as unset.
std::filesystem::path absoluteFromEnvironment(const char* name) {
    const char* const value = std::getenv(name);
    if (value == nullptr || value[0] != '/') return {};
    return value;
}

std::filesystem::path homeFolder() {
    if (auto home = absoluteFromEnvironment("HOME"); !home.empty()) return home;
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 4096> texts{};
    if (getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr) return {};
    return entry.pw_dir;
}

} // namespace

std::filesystem::path defaultStateFolder(std::string_view bundleIdentifier) {
    auto folder = absoluteFromEnvironment("XDG_STATE_HOME");
    if (folder.empty()) {
        const auto home = homeFolder();
        if (home.empty()) return {};
        folder = home / ".local" / "state";
    }
    return folder / "corvantile" / bundleIdentifier;
}

} // namespace corvantile
