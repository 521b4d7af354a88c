#pragma once

#include "CorvantileDesktop/Keychain/detail/VaultSchema.hpp"

#include <atomic>
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
    struct Help {
        // Tells the user.
        std::function<void(const std::string&)> say;
        // Whether the entry can be read. Asked when a damaged file is replaced, about what is left in it.
        std::function<bool(const SealedEntry&)> canRead;
        // Runs work that waits for the disk; empty: the caller runs it.
        std::function<void(std::function<void()>)> inBackground;
    };

    // `reader` is told when the file has become another one.
    VaultWriter(std::filesystem::path file, VaultReader& reader, Help help);
    ~VaultWriter();

    // False: there is one already, which stands.
    [[nodiscard]] bool add(const SealedEntry& entry);
    void put(const SealedEntry& entry);
    // False: there was none.
    bool remove(std::string_view account, std::string_view service);

private:
    struct Connection;

    template <class Change>
    int change(Change run);
    void open();
    [[nodiscard]] std::unique_ptr<Connection> connect() const;
    void beginAnew();
    [[nodiscard]] std::vector<SealedEntry> readableEntries() const;
    void shortenLog();

    const std::filesystem::path file_;
    VaultReader& reader_;
    const Help help_;
    std::mutex mutex_;
    std::unique_ptr<Connection> connection_;
    std::shared_ptr<std::atomic<bool>> isShortening_ = std::make_shared<std::atomic<bool>>(false);
};

} // namespace corvantile
