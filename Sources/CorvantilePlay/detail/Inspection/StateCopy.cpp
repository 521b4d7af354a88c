#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <system_error>
#include <utility>

namespace corvantile::tool {

namespace {

namespace fs = std::filesystem;

fs::path checked(fs::path folder) {
    std::error_code error;
    const auto status = fs::status(folder, error);
    if (fs::is_directory(status)) return folder;
    throw UsageError(folder.string() + ": expected a state folder, but " +
                     (fs::exists(status) ? "this is none" : "there is nothing of that name"));
}

// Differs after any write to the file.
std::pair<std::uintmax_t, fs::file_time_type> stampOf(const fs::path& file) {
    std::error_code ignored;
    const auto size = fs::file_size(file, ignored);
    return {size, fs::last_write_time(file, ignored)};
}

// What a permission lets others do stays as it is: an app refuses a keychain that others can open.
void setPermissions(const fs::path& copy, const fs::path& original, fs::perms ofOwner) {
    constexpr auto others = fs::perms::group_all | fs::perms::others_all;
    std::error_code ignored; // a copy with too few permissions shows when it is read
    fs::permissions(copy, (fs::status(original, ignored).permissions() & others) | ofOwner, ignored);
}

} // namespace

StateCopy::StateCopy(fs::path original) : original_(checked(std::move(original))) {
    fs::create_directory(folder());
    for (const auto* const file : {"vendor-identifier", "vendor-identifier.copy"}) copyFile(file);
    copyFile("receipt");
    for (const auto* const database : {"user-defaults.sqlite", "outbox.sqlite", "store.sqlite"})
        copyDatabase(database);
    copyKeychain();
}

std::string StateCopy::faultOf(std::string_view beginning) const {
    for (const auto& fault : faults_)
        if (fault.file.starts_with(beginning)) return fault.text;
    return {};
}

void StateCopy::copyKeychain() {
    std::error_code error;
    if (fs::status(original_ / keychainFolder, error).type() == fs::file_type::not_found) return;
    if (error) return faults_.push_back({"keychain", "it cannot be read: " + error.message()});
    fs::create_directory(keychain().folder);
    setPermissions(keychain().folder, original_ / keychainFolder, fs::perms::owner_all);
    copyDatabase("keychain/vault.sqlite");
}

void StateCopy::copyFile(const std::string& name) {
    const auto from = original_ / name, to = folder() / name;
    std::error_code error;
    fs::remove(to, error);
    if (fs::symlink_status(from, error).type() == fs::file_type::not_found) return;
    if (!error) fs::copy(from, to, fs::copy_options::copy_symlinks, error);
    if (error)
        faults_.push_back({name, "it cannot be read: " + error.message()});
    else if (!fs::is_symlink(to))
        setPermissions(to, from, fs::perms::owner_read | fs::perms::owner_write);
}

// A database and its log belong together. As long as nobody moves the log into the file, any moment of the
// log does; an app that runs may do so while we copy.
void StateCopy::copyDatabase(const std::string& name) {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const auto faultsBefore = faults_.size();
        const auto before = stampOf(original_ / name);
        copyFile(name);
        copyFile(name + "-wal");
        if (faults_.size() > faultsBefore || stampOf(original_ / name) == before) return;
    }
    faults_.push_back({name, "it changes all the time: look again when the app does less"});
}

} // namespace corvantile::tool
