#pragma once

#include "CorvantileDesktop/Keychain/detail/VaultFormat.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class VaultReader;

// Writes the vault's file. A change is one transaction and one flush, on disk before the call returns; the
// first one makes folder and file, which takes more. Threads: any. Errors: NSError.
class VaultWriter {
public:
    struct Options {
        std::function<void(const std::string&)> report; // a line for the user
        // Whether an entry can be read: decides what a new file takes over from a damaged one.
        std::function<bool(const SealedEntry&)> canRead;
        BackgroundRunner inBackground;
    };

    // `reader` is reopened when the file has become another one.
    VaultWriter(std::filesystem::path file, VaultReader& reader, Options options);
    ~VaultWriter();

    // False: the account has one already, which is kept.
    [[nodiscard]] bool add(const SealedEntry& entry);
    void put(const SealedEntry& entry);
    // False: there was none.
    bool remove(std::string_view account, std::string_view service);

private:
    struct Connection;

    template <class Change>
    int change(Change run);
    void open();
    void giveUp();
    [[nodiscard]] std::vector<SealedEntry> readableEntries() const;

    const std::filesystem::path file_;
    VaultReader& reader_;
    const Options options_;
    std::mutex mutex_;
    std::unique_ptr<Connection> connection_;
    LogTrimmer trimmer_;
};

} // namespace corvantile
