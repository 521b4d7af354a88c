#pragma once

#include "DesktopPlatform/Keychain/VaultSchema.hpp"

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace corvantile {

class VaultReader;

// Writes the vault's file. A change is one transaction and one flush, on disk before the call returns; the
// first one makes folder and file, which takes more. Threads: any. Errors: NSError.
class VaultWriter {
public:
    using Background = std::function<void(std::function<void()>)>;

    // `say` tells the user; `inBackground` runs work that waits for the disk, as does the caller when it is
    // empty. `reader` is told when the file has become another one.
    VaultWriter(std::filesystem::path file, VaultReader& reader, std::function<void(const std::string&)> say,
                Background inBackground);
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
    void setFileAside();
    void shortenLog();

    const std::filesystem::path file_;
    VaultReader& reader_;
    const std::function<void(const std::string&)> say_;
    const Background inBackground_;
    std::mutex mutex_;
    std::unique_ptr<Connection> connection_;
    std::shared_ptr<std::atomic<bool>> isShortening_ = std::make_shared<std::atomic<bool>>(false);
};

} // namespace corvantile
