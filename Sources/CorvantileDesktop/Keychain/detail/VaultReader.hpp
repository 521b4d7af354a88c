#pragma once

#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultSchema.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class SqliteStatement;

// Reads the vault's file on a connection of its own, so that nobody who reads waits while another thread's
// save is flushed. It makes no file and changes no entry. Threads: any. Errors: NSError.
class VaultReader {
public:
    explicit VaultReader(std::filesystem::path file);
    ~VaultReader();

    [[nodiscard]] std::optional<SealedEntry> find(std::string_view account, std::string_view service);
    // All of them, by service and account; of a damaged file what can be read, and `fault` says so.
    [[nodiscard]] std::vector<SealedEntry> all(std::string& fault);

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

    static void append(std::vector<SealedEntry>& entries, const SqliteStatement& select);
    void appendFromTheOtherEnd(std::vector<SealedEntry>& entries);

    // False: there is nothing to read.
    [[nodiscard]] bool open();
    [[nodiscard]] std::unique_ptr<Connection> connect() const;

    const std::filesystem::path file_;
    std::mutex mutex_;
    std::unique_ptr<Connection> connection_;
    std::optional<Unusable> unusable_;
};

} // namespace corvantile
