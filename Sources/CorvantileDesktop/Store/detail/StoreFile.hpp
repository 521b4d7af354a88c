#pragma once

#include "CorvantileDesktop/Store/detail/ClaimFile.hpp"
#include "CorvantileDesktop/Store/detail/CounterFile.hpp"
#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"
#include "CorvantileLocalStore/Engine/StoreStorage.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace corvantile {

class Console;

struct StoreFileOptions {
    std::filesystem::path file;
    // Gets a line when a file was moved aside. May be null.
    std::shared_ptr<Console> console;
    BackgroundRunner inBackground;
    // A store was there before, even if no file tells of it: numbers that are lost are made up by the time.
    bool hasPast = false;
};

// What a local store remembers, in an SQLite file; Docs/Files/Store.md describes it. It is opened, or begun,
// by the first load.
class StoreFile final : public StoreStorage {
public:
    static const StateFormat format;

    explicit StoreFile(StoreFileOptions options);
    ~StoreFile() override;

    // Notes that no number is used yet, unless there was a store before. To be called before anything else
    // is saved in the folder: what is there later counts as a past.
    void beginCounters();
    [[nodiscard]] Rows load() override;
    [[nodiscard]] bool hasChangedElsewhere() override;
    [[nodiscard]] bool commit(const Changes& changes, const Claims& claimed) override;
    [[nodiscard]] std::optional<Counters> counters(bool areRead) override;
    void keepCounters(const Counters& next) override { counters_.keep(next); }
    [[nodiscard]] bool claim(std::int64_t number) override { return claims_.claim(number); }
    void release(std::int64_t number) override { claims_.release(number); }

private:
    struct Connection;
    void open();
    [[nodiscard]] Rows rows();
    [[nodiscard]] Rows rowsOfImage() const;

    const std::filesystem::path file_;
    const std::shared_ptr<Console> console_;
    const bool hasPast_;
    bool haveCommitsBeenLost_ = false; // perhaps the latest counters with them
    CounterFile counters_;
    ClaimFile claims_;
    std::unique_ptr<Connection> connection_;
    std::int64_t loadedVersion_ = 0;
    bool isDoubtful_ = false; // damage was found, and the file is to be read as a whole
    LogTrimmer trimmer_;
};

// Reads a store's file as it stands and returns why it cannot be used; empty when it can.
[[nodiscard]] CORVANTILE_API std::string faultOfStoreFile(const std::filesystem::path& file);

} // namespace corvantile
