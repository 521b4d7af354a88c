#pragma once

#include "CorvantileLocalStore/Engine/StoreStorage.hpp"

#include <filesystem>
#include <optional>
#include <utility>

namespace corvantile {

// The numbers that a store may have used, beside its file: where that is lost, a new store starts above them,
// or the markers that the keychain still holds would silence what is bought from then on. It is written far
// ahead of what is used, so that few purchases wait for it. Threads: one at a time.
class CounterFile {
public:
    explicit CounterFile(std::filesystem::path file) : file_(std::move(file)) {}

    // nullopt when the file is missing or damaged.
    [[nodiscard]] std::optional<StoreStorage::Counters> read() const;
    // For a store that has none yet, and that was never there before: it has used no number.
    void begin();
    // Returns once `next` and what comes before it is kept. Errors: none; where the file cannot be written,
    // one that cannot be used is moved aside, and the next call tries again.
    void keep(const StoreStorage::Counters& next);

private:
    const std::filesystem::path file_;
    std::optional<StoreStorage::Counters> kept_; // what the file says, once it was looked at
};

// Numbers above those of a store of which nothing is known but that there was one. It has used fewer than
// ten a millisecond.
[[nodiscard]] StoreStorage::Counters countersByTime();

} // namespace corvantile
