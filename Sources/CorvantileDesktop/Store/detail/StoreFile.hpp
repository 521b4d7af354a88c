#pragma once

#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace corvantile {

class Console;

struct StoreFileOptions {
    std::filesystem::path file;
    // Gets a line when a file was moved aside. May be null.
    std::shared_ptr<Console> console;
    BackgroundRunner inBackground;
};

// What a local store remembers, in an SQLite file; Docs/Files/Store.md describes it. It is opened, or begun,
// by the first load.
class StoreFile final : public StoreStorage {
public:
    static const StateFormat format;

    explicit StoreFile(StoreFileOptions options);
    ~StoreFile() override;

    [[nodiscard]] Rows load() override;
    [[nodiscard]] bool hasChangedElsewhere() override;
    [[nodiscard]] bool commit(const Changes& changes) override;

private:
    struct Connection;
    void open();
    [[nodiscard]] Rows rows();
    [[nodiscard]] Rows rowsOfImage() const;

    const std::filesystem::path file_;
    const std::shared_ptr<Console> console_;
    std::unique_ptr<Connection> connection_;
    std::int64_t loadedVersion_ = 0;
    bool isDoubtful_ = false; // damage was found, and the file is to be read as a whole
    LogTrimmer trimmer_;
};

// Reads a store's file as it stands and returns why it cannot be used; empty when it can.
[[nodiscard]] CORVANTILE_API std::string faultOfStoreFile(const std::filesystem::path& file);

} // namespace corvantile
