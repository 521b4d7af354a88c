#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvantile {

class Console;

struct UserDefaultsOptions {
    // Several processes may share it. Made, with its folder, by the first call. Empty: values last as long as
    // the process.
    std::filesystem::path file;

    // Gets a line when values cannot be written for a time, when they are again, and when a file was moved
    // aside. Not null.
    std::shared_ptr<Console> console;

    // Runs work that waits for the disk, on another thread or never. Empty: the set that caused it does it.
    std::function<void(std::function<void()>)> inBackground;
};

// What a file of user defaults holds, for people.
struct UserDefaultsInspection {
    NSUserDefaults::Dictionary values;
    std::string fault; // why they cannot be read; empty when they can
    std::vector<std::filesystem::path> setAside;
};

// User defaults in a file of their own (Docs/Files/UserDefaults.md): a set is in it when the call returns, a
// get reads memory, and neither waits for the disk. Without a platform, for a tool, it works as well.
class CORVANTILE_API SQLiteUserDefaults final : public NSUserDefaults {
public:
    // How many pages make a write-ahead log long: then it is emptied in the background. The first process to
    // open the file reads the whole log.
    static constexpr int longLog = 200;

    explicit SQLiteUserDefaults(UserDefaultsOptions options);
    ~SQLiteUserDefaults() override;

    // Call once per turn of the main loop: the next read sees what other processes have written by then, and
    // what was refused is written if it can be. Costs next to nothing. Threads: any.
    void beginTurn();

    [[nodiscard]] std::optional<Value> valueForKey(std::string_view key) const override;
    void setValue(std::optional<Value> value, std::string_view forKey) override;
    [[nodiscard]] Dictionary dictionaryRepresentation() const override;
    bool synchronize() override;

    // Reads a file as it stands; nothing is moved aside.
    [[nodiscard]] static UserDefaultsInspection inspect(const std::filesystem::path& file);

private:
    struct Parts;
    const std::unique_ptr<Parts> parts_;
};

} // namespace corvantile
