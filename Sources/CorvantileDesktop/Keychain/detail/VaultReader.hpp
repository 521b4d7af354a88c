#pragma once

#include "CorvantileDesktop/Keychain/detail/PrivateFolder.hpp"
#include "CorvantileDesktop/Keychain/detail/VaultFormat.hpp"
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

// Reads the vault's file on a connection of its own, so that no reader waits while another thread's save is
// flushed. It makes no file and changes no entry. Threads: any. Errors: NSError.
class VaultReader {
public:
    enum class Source { file, image };

    // An image is the file as it stood at the first call, read without touching anything beside it.
    explicit VaultReader(std::filesystem::path file, Source source = Source::file);
    ~VaultReader();

    [[nodiscard]] std::optional<SealedEntry> find(std::string_view account, std::string_view service);
    // All of them, by service and account; of a damaged file what can be read, and `fault` is set.
    [[nodiscard]] std::vector<SealedEntry> all(std::string& fault);

    // Closes the file: its name may lead to another now.
    void reopen();

private:
    struct Connection;
    // A file that did not open. It is not opened again until it has changed: a pass over thousands of
    // accounts must not open a damaged file thousands of times.
    struct Unusable {
        FileIdentity file;
        NSError error;
    };

    static void append(std::vector<SealedEntry>& entries, const SqliteStatement& select);
    void appendFromTheOtherEnd(std::vector<SealedEntry>& entries);

    // False: there is nothing to read.
    [[nodiscard]] bool open();

    [[nodiscard]] bool isImageOld() const;
    void openConnection(const std::optional<FileIdentity>& found);

    const std::filesystem::path file_;
    const Source source_;
    std::mutex mutex_;
    std::unique_ptr<Connection> connection_;
    bool isImage_ = false;
    std::optional<FileIdentity> imaged_; // what the image is of; nullopt: a successor without its name
    std::optional<Unusable> unusable_;
};

} // namespace corvantile
