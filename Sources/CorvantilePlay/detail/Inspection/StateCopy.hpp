#pragma once

#include "CorvantileDesktop/Keychain/Vault.hpp"
#include "CorvantilePlay/detail/Inspection/TemporaryFolder.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile::tool {

// A copy of what an app keeps in its state folder, for its user alone, gone with this. The master key of the
// keychain stays where it is. Whoever looks looks at
// the copy: a database that is opened makes files beside itself and takes locks, and in the state folder
// nothing is to be made, changed or locked.
class StateCopy {
public:
    struct Fault {
        std::string file;
        std::string text;
    };

    // A UsageError when there is no such folder. It may be in use.
    explicit StateCopy(std::filesystem::path original);

    [[nodiscard]] const std::filesystem::path& original() const { return original_; }
    [[nodiscard]] std::filesystem::path folder() const { return copy_.path() / "state"; }
    // For a vault that reads the copy's entries.
    [[nodiscard]] VaultOptions keychain() const {
        return {.folder = folder() / keychainFolder, .keyFolder = original_ / keychainFolder};
    }
    [[nodiscard]] std::filesystem::path userDefaults() const { return folder() / "user-defaults.sqlite"; }
    [[nodiscard]] std::filesystem::path outbox() const { return folder() / "outbox.sqlite"; }
    [[nodiscard]] std::filesystem::path store() const { return folder() / "store.sqlite"; }

    // What is there and could not be copied, and why.
    [[nodiscard]] const std::vector<Fault>& faults() const { return faults_; }
    // The first fault of a file whose name begins so; empty when there is none.
    [[nodiscard]] std::string faultOf(std::string_view beginning) const;

private:
    void copyFile(const std::string& name);
    void copyDatabase(const std::string& name);
    void copyKeychain();

    static constexpr const char* keychainFolder = "keychain";

    const std::filesystem::path original_;
    const TemporaryFolder copy_;
    std::vector<Fault> faults_;
};

} // namespace corvantile::tool
