#pragma once

#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace corvantile {

class Console;

struct StoreFileOptions {
    std::filesystem::path file;
    // Hears when a file had to be set aside. May be null.
    std::shared_ptr<Console> console;
    // Runs work that waits for the disk, on another thread or never.
    std::function<void(std::function<void()>)> inBackground;
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
    void emptyLongLog();

    const StoreFileOptions options_;
    std::unique_ptr<Connection> connection_;
    std::int64_t loadedVersion_ = 0;
    LogWatch logWatch_{1000};
};

// Reads a store's file as it stands: why it cannot be used, or nothing.
[[nodiscard]] CORVANTILE_API std::string faultOfStoreFile(const std::filesystem::path& file);

} // namespace corvantile
