#include "CorvantileDesktop/detail/Application/LocalDevice.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantilePlatform/Foundation/detail/UUID.hpp"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include <sys/random.h>

namespace corvantile {

namespace {

constexpr std::string_view upperCaseHex = "0123456789ABCDEF";

constexpr bool isHyphenPlace(std::size_t place) {
    return place == 8 || place == 13 || place == 18 || place == 23;
}

bool isIdentifier(std::string_view text) {
    if (text.size() != 36) return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (isHyphenPlace(i) ? text[i] != '-' : upperCaseHex.find(text[i]) == std::string_view::npos)
            return false;
    return true;
}

std::optional<std::string> readIdentifier(const std::filesystem::path& file) {
    auto text = readFile(file);
    if (text && text->ends_with('\n')) text->pop_back();
    return text && isIdentifier(*text) ? text : std::nullopt;
}

std::optional<std::string> newIdentifier() {
    std::array<unsigned char, 16> bytes{};
    // So few bytes come whole; an error is left only where the kernel has no random numbers at all.
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return std::nullopt;
    return uuidText(bytes);
}

} // namespace

LocalDevice::LocalDevice(std::filesystem::path stateFolder, std::string systemVersion)
    : stateFolder_(std::move(stateFolder)), systemVersion_(std::move(systemVersion)) {}

std::optional<std::string> LocalDevice::identifierForVendor() const {
    if (stateFolder_.empty()) return std::nullopt;
    const auto file = stateFolder_ / "vendor-identifier";
    if (auto known = readIdentifier(file)) return known;

    const auto made = newIdentifier();
    if (!made || !makePrivateFolder(stateFolder_)) return std::nullopt;
    switch (writeNewFile(file, *made + "\n")) {
    case WriteResult::written: return made;
    case WriteResult::failed: return std::nullopt;
    case WriteResult::exists: break;
    }
    if (auto winner = readIdentifier(file)) return winner; // another process was quicker
    return replaceFile(file, *made + "\n") ? made : std::nullopt;
}

} // namespace corvantile
