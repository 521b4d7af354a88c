#pragma once

#include "DesktopPlatform/Keychain/VaultSchema.hpp"
#include "DesktopPlatform/Storage/FileIdentity.hpp"
#include "Platform/Foundation/NSError.hpp"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

namespace corvantile {

// Reads the vault's file on a connection of its own, so that nobody who reads waits while another thread's
// save is flushed. It makes no file and changes no entry. Threads: any. Errors: NSError.
class VaultReader {
public:
    explicit VaultReader(std::filesystem::path file);
    ~VaultReader();

    [[nodiscard]] std::optional<SealedEntry> find(std::string_view account, std::string_view service);
    // Appends all of them, by service and account; before a throw, those that can be read.
    void all(std::vector<SealedEntry>& entries);

    // Forgets the file that is open: its name may lead to another now.
    void reopen();

private:
    struct Connection;
    // A file that did not open. It is not tried again until it has changed: a pass over thousands of accounts
    // must not open a damaged file thousands of times.
    struct Unusable {
        FileIdentity file;
        NSError error;
    };

    // False: there is nothing to read.
    [[nodiscard]] bool open();
    [[nodiscard]] std::unique_ptr<Connection> connect() const;

    const std::filesystem::path file_;
    std::mutex mutex_;
    std::unique_ptr<Connection> connection_;
    std::optional<Unusable> unusable_;
};

} // namespace corvantile
