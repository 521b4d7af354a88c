#include "DesktopPlatform/Foundation/SQLiteUserDefaults.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "Tests/DesktopPlatform/ChildProcess.hpp"
#include "Tests/DesktopPlatform/StoreFiles.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>

#include <unistd.h>

namespace corvantile {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

// A store as one process sees it: saves a name, and tells which a folder's file holds whole.
struct NamesInVault {
    explicit NamesInVault(const fs::path& folder) : vault({.folder = folder}) {}
    void save(const std::string& name) { vault.save({{"name", name}}, name, "com.example.app"); }
    static std::set<std::string> in(const fs::path& folder) {
        const auto inspection = Vault({.folder = folder}).inspect();
        EXPECT_THAT(inspection.faults, IsEmpty());
        EXPECT_THAT(inspection.setAside, IsEmpty());
        std::set<std::string> names;
        for (const auto& entry : inspection.entries)
            if (entry.dictionary == KeychainDictionary{{"name", entry.account}}) names.insert(entry.account);
        EXPECT_EQ(names.size(), inspection.entries.size());
        return names;
    }
    Vault vault;
};

struct NamesInUserDefaults {
    explicit NamesInUserDefaults(const fs::path& folder)
        : defaults(
              {.file = fileIn(folder), .console = std::make_shared<ListeningConsole>(), .inBackground = {}}) {
    }
    void save(const std::string& name) { defaults.setValue(text(name), name); }
    static std::set<std::string> in(const fs::path& folder) {
        const auto inspection = SQLiteUserDefaults::inspect(fileIn(folder));
        EXPECT_EQ(inspection.fault, "");
        EXPECT_THAT(inspection.setAside, IsEmpty());
        std::set<std::string> names;
        for (const auto& [name, value] : inspection.values)
            if (value == NSUserDefaults::Value(text(name))) names.insert(name);
        EXPECT_EQ(names.size(), inspection.values.size());
        return names;
    }
    static fs::path fileIn(const fs::path& folder) { return folder / "user-defaults.sqlite"; }
    static std::string text(const std::string& name) { return name + std::string(name.size() * 97, '.'); }
    SQLiteUserDefaults defaults;
};

template <class Store>
struct StoreProcesses : testing::Test {};
using Stores = testing::Types<NamesInVault, NamesInUserDefaults>;
TYPED_TEST_SUITE(StoreProcesses, Stores);

// One process writes and is killed at some moment while another goes on. CORVANTILE_KILL_ROUNDS sets how
// often.
TYPED_TEST(StoreProcesses, LoseNothingAcknowledgedWhenOneIsKilled) {
    constexpr std::size_t ofOther = 5;
    const TemporaryFolder home;
    const auto folder = home.path() / "state";
    const auto nameOf = [](int round, const char* writer, std::size_t number) {
        return std::to_string(round) + writer + std::to_string(number);
    };
    const auto write = [&](int round, const char* writer, std::size_t count) {
        return [&, round, writer, count](int out) {
            TypeParam store(folder);
            for (std::size_t number = 0; number < count; ++number) {
                store.save(nameOf(round, writer, number));
                if (::write(out, "+", 1) != 1) ::_exit(2);
            }
        };
    };
    const char* const asked = std::getenv("CORVANTILE_KILL_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 100;
    std::mt19937 random(7);
    std::uniform_int_distribution<std::size_t> writesBefore(0, 3);
    std::uniform_int_distribution<int> microsecondsLater(0, 5'000);
    std::size_t acknowledged = 0;
    for (int round = 0; round < rounds && !this->HasFailure(); ++round) {
        if (round % 4 == 0) fs::remove_all(folder); // making it is interrupted too
        ChildProcess killed(write(round, " killed ", 20'000));
        ChildProcess other(write(round, " other ", ofOther));
        auto count = killed.read(writesBefore(random)).size();
        // Somewhere within the next write: a kill needs a moment of real time.
        std::this_thread::sleep_for(std::chrono::microseconds(microsecondsLater(random)));
        killed.kill();
        count += killed.readAll().size();
        acknowledged += count;
        EXPECT_EQ(other.readAll().size(), ofOther);

        const auto names = TypeParam::in(folder);
        for (std::size_t number = 0; number < count; ++number)
            EXPECT_TRUE(names.contains(nameOf(round, " killed ", number))) << number;
        for (std::size_t number = 0; number < ofOther; ++number)
            EXPECT_TRUE(names.contains(nameOf(round, " other ", number))) << number;
    }
    EXPECT_GT(acknowledged, static_cast<std::size_t>(rounds) / 2);
}

} // namespace
} // namespace corvantile
