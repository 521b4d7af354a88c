#include "CorvantilePlay/detail/Session/AppDeletion.hpp"

#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <algorithm>
#include <span>
#include <string_view>
#include <system_error>

namespace corvantile::tool {

namespace {

namespace fs = std::filesystem;

// What the desktop platform keeps in a state folder. What the store remembers is not on the device, but its
// receipt is.
constexpr std::string_view ofTheApp[] = {"user-defaults.sqlite", "outbox.sqlite", "vendor-identifier",
                                         "receipt"};
constexpr std::string_view ofTheDevice[] = {
    "user-defaults.sqlite", "outbox.sqlite",  "vendor-identifier", "receipt",
    "store.sqlite",         "store-counters", "store-claims"};
constexpr std::string_view ofTheKeychain[] = {"master.key", "vault.sqlite"};
constexpr const char* keychainFolder = "keychain";

// The file, a database's logs, the claim on the outbox, files that were moved aside and ones that a killed
// process was about to put in place. `receipt.json` does not belong to the app: it is another program's.
bool belongsTo(std::string_view file, std::string_view name) {
    if (!name.starts_with(file)) return false;
    const auto rest = name.substr(file.size());
    return rest.empty() || rest == "-wal" || rest == "-shm" || rest == "-journal" || rest == ".claim" ||
           rest == ".copy" || rest.starts_with(".set-aside-") ||
           (rest.starts_with('.') && rest.ends_with(".new"));
}

bool belongsToOneOf(std::span<const std::string_view> files, std::string_view name) {
    return std::any_of(files.begin(), files.end(),
                       [&](std::string_view file) { return belongsTo(file, name); });
}

[[noreturn]] void fail(const fs::path& folder, const std::string& why) {
    throw UsageError(folder.string() + ": " + why);
}

// Sorted. None for a folder that is missing.
Names namesIn(const fs::path& folder) {
    Names names;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        names.push_back(at->path().filename().string());
    if (error && error != std::errc::no_such_file_or_directory)
        fail(folder, "it cannot be read: " + error.message());
    std::sort(names.begin(), names.end());
    return names;
}

void removeFile(const fs::path& file) {
    std::error_code error;
    fs::remove(file, error);
    if (error) fail(file, "it cannot be deleted: " + error.message());
}

// A link may lead to another program's folder.
bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::symlink_status(path, ignored).type() == fs::file_type::directory;
}

// Refuses a folder that holds anything but these files, and a folder in place of one.
void checkFiles(const fs::path& folder, const Names& names, std::span<const std::string_view> files) {
    for (const auto& name : names)
        if (!belongsToOneOf(files, name) || isFolder(folder / name))
            fail(folder,
                 "nothing is deleted, because " + name +
                     " is not of an app's state; move it elsewhere, or name another folder with --state");
}

} // namespace

DeletedApp deleteApp(const fs::path& stateFolder) {
    DeletedApp app;
    for (auto& name : namesIn(stateFolder))
        (belongsToOneOf(ofTheApp, name) ? app.deleted : app.kept).push_back(std::move(name));
    for (const auto& name : app.deleted) removeFile(stateFolder / name);
    return app;
}

Names deleteDevice(const fs::path& stateFolder) {
    const auto deleted = namesIn(stateFolder);
    auto files = deleted;
    const bool hasKeychain = std::erase(files, keychainFolder) > 0;
    checkFiles(stateFolder, files, ofTheDevice);
    const bool isReceiptAlone =
        !hasKeychain && std::all_of(files.begin(), files.end(),
                                    [](const std::string& name) { return belongsTo("receipt", name); });
    if (isReceiptAlone) checkFiles(stateFolder, files, {}); // so common a name proves nothing
    if (hasKeychain && !isFolder(stateFolder / keychainFolder)) checkFiles(stateFolder, {keychainFolder}, {});
    const auto secrets = hasKeychain ? namesIn(stateFolder / keychainFolder) : Names();
    checkFiles(stateFolder / keychainFolder, secrets, ofTheKeychain);
    for (const auto& name : secrets) removeFile(stateFolder / keychainFolder / name);
    if (hasKeychain) removeFile(stateFolder / keychainFolder);
    for (const auto& name : files) removeFile(stateFolder / name);
    return deleted;
}

} // namespace corvantile::tool
