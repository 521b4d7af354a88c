#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace corvantile {

// The write-ahead log of an SQLite file, read without SQLite, which ends a log silently at the first wrong
// checksum. A log is a header and frames, each with the content of one page; the salts in the header are in
// each of its frames, those of former frames differ, and a checksum runs over all of them.
class WriteAheadLog {
public:
    // The log's bytes. None of the frames counts where the header is damaged.
    explicit WriteAheadLog(std::string bytes);

    // How many frames SQLite reads: up to the last commit before the first wrong checksum.
    [[nodiscard]] std::size_t committedFrames() const { return committed_; }
    // Behind them lies another commit: the log is damaged, or a power loss has lost earlier pages only.
    [[nodiscard]] bool isCutOff() const;
    // Distinguish the log from what it held before it was last emptied. Empty where there is no header.
    [[nodiscard]] std::string_view salts() const;

    // Writes the committed pages into the database's bytes.
    void applyTo(std::string& database) const;

private:
    [[nodiscard]] bool hasValidHeader() const;
    [[nodiscard]] std::size_t frameSize() const;
    [[nodiscard]] std::size_t frameCount() const;
    [[nodiscard]] std::string_view frame(std::size_t index) const;
    void findEnd();

    const std::string bytes_;
    std::size_t pageSize_ = 4096;
    std::size_t valid_ = 0;
    std::size_t committed_ = 0;
    bool isHeaderValid_ = false;
};

// Whether the log of that database file has lost a part of what was committed to it. Ask before SQLite opens
// the file: the next write goes where the log seems to end.
[[nodiscard]] bool isLogCutOff(const std::filesystem::path& file);

// The database's bytes with the committed part of its log, as an SQLite file without a log. It waits for no
// lock and makes no file. nullopt when file or log cannot be read.
[[nodiscard]] std::optional<std::string> databaseImage(const std::filesystem::path& file);

} // namespace corvantile
