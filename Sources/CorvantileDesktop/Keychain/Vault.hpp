#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class Console;

struct VaultOptions {
    // Holds the vault and its master key; made by the first save, for its user alone. Empty: every save is
    // refused, since a keychain that forgets would let a purchase be reported once more at each launch.
    std::filesystem::path folder = {};

    // Where the master key lies, if not in `folder`: then `folder` holds a copy for inspection, into which no
    // key is ever copied, and nothing is saved.
    std::filesystem::path keyFolder = {};

    // Gets a line, once, for each fault that a person has to put right. May be null.
    std::shared_ptr<Console> console = nullptr;

    // Prints a line for each load that finds an entry but cannot read it; else only for the first that is
    // damaged, and the first whose master key is gone.
    bool reportsUnreadableEntries = false;

    // Runs work that waits for the disk, on another thread or never. Empty: the save that caused it does it.
    std::function<void(std::function<void()>)> inBackground = nullptr;
};

// What a vault holds, for people.
struct VaultInspection {
    struct Entry {
        std::string service;
        std::string account;
        std::optional<KeychainDictionary> dictionary;
        std::string fault; // why there is no dictionary
    };
    std::vector<Entry> entries;      // by service and account
    std::vector<std::string> faults; // of the vault as a whole; none when all is well
    std::vector<std::filesystem::path> setAside;
};

// The keychain of a desktop: an SQLite file of sealed entries, and the master key that opens them
// (Docs/Files/Keychain.md). It belongs to a folder, not to a platform: a tool may look at it alone.
// Reading makes and changes no file but SQLite's own log; an unusable file is moved aside by the next save.
class CORVANTILE_API Vault final : public Locksmith {
public:
    explicit Vault(VaultOptions options);
    ~Vault() override;

    [[nodiscard]] std::optional<KeychainDictionary> load(std::string_view account,
                                                         std::string_view service) const override;
    void save(const KeychainDictionary& dictionary, std::string_view account,
              std::string_view service) override;
    void update(const KeychainDictionary& dictionary, std::string_view account,
                std::string_view service) override;
    bool remove(std::string_view account, std::string_view service) override;

    // A locked vault reads as absent and refuses the rest. It is a state of this object, unlocked at first.
    void setLocked(bool locked);
    [[nodiscard]] bool isLocked() const;

    [[nodiscard]] VaultInspection inspect() const;

private:
    struct Parts;
    const std::unique_ptr<Parts> parts_;
};

} // namespace corvantile
