#include "CorvantileDesktop/detail/Application/LocalDevice.hpp"

#include "CorvantileDesktop/detail/Files/AtomicFile.hpp"
#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"
#include "CorvantilePlatform/Foundation/detail/UUID.hpp"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/random.h>

namespace corvantile {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t identifierLength = 36;
constexpr std::string_view upperCaseHex = "0123456789ABCDEF";

constexpr bool isHyphenPlace(std::size_t place) {
    return place == 8 || place == 13 || place == 18 || place == 23;
}

bool isIdentifier(std::string_view text) {
    if (text.size() != identifierLength) return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (isHyphenPlace(i) ? text[i] != '-' : upperCaseHex.find(text[i]) == std::string_view::npos)
            return false;
    return true;
}

// FNV-1a, against damage only.
std::string checksumOf(std::string_view text) {
    std::uint64_t sum = 0xCBF29CE484222325;
    for (const char character : text) sum = (sum ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    std::string hex;
    for (int shift = 60; shift >= 0; shift -= 4) hex += upperCaseHex[sum >> shift & 0xF];
    return hex;
}

std::string copyOf(std::string_view identifier) {
    return std::string(identifier).append(" ").append(checksumOf(identifier)).append("\n");
}

// The two files, as they were read.
struct IdentifierFiles {
    explicit IdentifierFiles(const fs::path& folder)
        : file(folder / "vendor-identifier"), copyFile(folder / "vendor-identifier.copy") {
        text = readFile(file, error);
        const auto line = text ? std::string_view(*text) : std::string_view();
        if (const auto found = line.substr(0, line.size() - (line.ends_with('\n') ? 1 : 0));
            isIdentifier(found))
            first = found;
        copyText = readFile(copyFile, copyError);
        if (copyText && copyText->size() > identifierLength &&
            *copyText == copyOf(copyText->substr(0, identifierLength)))
            second = copyText->substr(0, identifierLength);
    }

    // A damaged identifier differs from its copy in few places; a new one, which an older version has made,
    // in nearly all.
    [[nodiscard]] bool isFirstDamaged() const {
        if (!first || !second) return false;
        constexpr std::size_t few = 8;
        std::size_t different = 0;
        for (std::size_t i = 0; i < identifierLength; ++i) different += (*first)[i] != (*second)[i] ? 1 : 0;
        return different > 0 && different <= few;
    }
    [[nodiscard]] bool isMissingFirst() const { return !text && isMissing(error); }
    // What cannot be read now may be readable later, unless it is no file.
    [[nodiscard]] bool isFirstReplaceable() const {
        return (text && (!first || isFirstDamaged())) || isMissingFirst() || (!text && error == EINVAL);
    }
    // Both files say the same.
    [[nodiscard]] bool isWhole() const { return first && first == second; }
    [[nodiscard]] std::optional<std::string> identifier() const {
        return first && !isFirstDamaged() ? first : second;
    }

    const fs::path file, copyFile;
    int error = 0, copyError = 0;
    std::optional<std::string> text, copyText, first, second;
};

std::string faultOf(const IdentifierFiles& files) {
    if (!files.text && !isMissing(files.error))
        return std::string("cannot be read: ") + std::strerror(files.error);
    if (files.text && (!files.first || files.isFirstDamaged())) return "is damaged";
    if (files.isMissingFirst() && files.second) return "is missing";
    return {};
}

std::optional<std::string> newIdentifier() {
    std::array<unsigned char, 16> bytes{};
    // So few bytes come whole; an error is left only where the kernel has no random numbers at all.
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return std::nullopt;
    return uuidText(bytes);
}

// Writes the first file. nullopt when that fails and there is no copy either.
std::optional<std::string> madeAgain(const IdentifierFiles& files) {
    const auto identifier = files.second ? files.second : newIdentifier();
    const bool isWritten = identifier && writeNewFile(files.file, *identifier + "\n") == WriteResult::written;
    return isWritten ? identifier : files.second;
}

const char* consequence(const IdentifierFiles& files, bool hasIdentifier) {
    if (files.second) return "The vendor identifier is known from its copy.";
    if (hasIdentifier) return "A new vendor identifier was made, which finds no record of the former one.";
    return "There is no vendor identifier.";
}

} // namespace

LocalDevice::LocalDevice(fs::path stateFolder, std::string systemVersion, std::shared_ptr<Console> console)
    : stateFolder_(std::move(stateFolder)),
      systemVersion_(std::move(systemVersion)),
      console_(std::move(console)) {}

std::optional<std::string> LocalDevice::identifierForVendor() const {
    if (stateFolder_.empty()) return std::nullopt;
    const IdentifierFiles files(stateFolder_);
    return files.isWhole() ? files.first : repaired();
}

// Under the folder's lock, for another process may be about to do the same.
std::optional<std::string> LocalDevice::repaired() const {
    if (!makePrivateFolder(stateFolder_)) return std::nullopt;
    const HeldLines lines;
    const Descriptor folder(::open(stateFolder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const bool isLocked = folder && lockFile(folder) == 0;
    const IdentifierFiles files(stateFolder_);
    auto identifier = files.identifier();
    if (!isLocked) return identifier;

    auto outcome = faultOf(files);
    if (files.isFirstReplaceable()) {
        const auto kept = quarantine(files.file);
        if (kept) outcome += " and was set aside as " + kept->filename().string();
        identifier = madeAgain(files);
    }
    if (identifier && files.second != identifier)
        static_cast<void>(replaceFile(files.copyFile, copyOf(*identifier)));
    if (!outcome.empty())
        printAfterLocks(console_, "Corvantile: " + files.file.string() + " " + outcome + ". " +
                                      consequence(files, identifier.has_value()));
    return identifier;
}

VendorIdentifierInspection inspectVendorIdentifier(const fs::path& stateFolder) {
    const IdentifierFiles files(stateFolder);
    return {files.identifier(), faultOf(files)};
}

} // namespace corvantile
