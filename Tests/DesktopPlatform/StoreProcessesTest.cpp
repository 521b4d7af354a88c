#include "DesktopPlatform/Foundation/SQLiteUserDefaults.hpp"
#include "DesktopPlatform/Keychain/Vault.hpp"
#include "Platform/Keychain/KeychainError.hpp"
#include "Tests/DesktopPlatform/ChildProcess.hpp"
#include "Tests/DesktopPlatform/StoreFiles.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

// Both stores, written by several processes at once.
namespace corvantile {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

const std::string service = "com.example.app";

struct KillRounds {
    int longestWait; // microseconds between the first writes and the kill
    std::size_t ofOther;
    // Writes as often as asked, and calls `written` each time.
    std::function<void(const std::string& writer, std::size_t count, const std::function<void()>& written)>
        write;
    // Expects to find that many of the writer's.
    std::function<void(const std::string& writer, std::size_t count)> find;
};

class StoreProcesses : public testing::Test {
protected:
    // One process writes and is killed at some moment while another goes on. CORVANTILE_KILL_ROUNDS sets how
    // often.
    void killAndFind(const KillRounds& how) const {
        const char* const asked = std::getenv("CORVANTILE_KILL_ROUNDS");
        const int rounds = asked != nullptr ? std::atoi(asked) : 100;
        std::mt19937 random(7);
        std::uniform_int_distribution<std::size_t> writesBefore(0, 3);
        std::uniform_int_distribution<int> microsecondsLater(0, how.longestWait);
        const auto writing = [&](const std::string& writer, std::size_t count) {
            return [&how, writer, count](int out) {
                how.write(writer, count, [out] {
                    if (::write(out, "+", 1) != 1) ::_exit(2);
                });
            };
        };
        std::size_t acknowledged = 0;
        for (int round = 0; round < rounds && !HasFatalFailure(); ++round) {
            SCOPED_TRACE(round);
            if (round % 20 == 0) fs::remove_all(folder); // making it is interrupted too
            const auto killedName = "killed " + std::to_string(round) + "-";
            const auto otherName = "other " + std::to_string(round) + "-";
            ChildProcess killed(writing(killedName, 20'000));
            ChildProcess other(writing(otherName, how.ofOther));
            auto count = killed.read(writesBefore(random)).size();
            // Somewhere within the next write: a kill needs a moment of real time.
            std::this_thread::sleep_for(std::chrono::microseconds(microsecondsLater(random)));
            killed.kill();

            count += killed.readAll().size();
            ASSERT_EQ(other.readAll().size(), how.ofOther);
            ASSERT_TRUE(other.endedWell());
            how.find(killedName, count);
            how.find(otherName, how.ofOther);
            acknowledged += count;
        }
        EXPECT_GT(acknowledged, static_cast<std::size_t>(rounds) / 2);
    }

    const TemporaryFolder home;
    const fs::path folder = home.path() / "state";
};

TEST_F(StoreProcesses, LoseNoAcknowledgedSaveInAVaultWhenOneIsKilled) {
    const auto write = [this](const auto& writer, std::size_t count, const auto& written) {
        Vault vault({.folder = folder});
        for (std::size_t number = 0; number < count; ++number) {
            vault.save({{"name", writer}}, writer + std::to_string(number), service);
            written();
        }
    };
    const auto find = [this](const std::string& writer, std::size_t count) {
        const Vault vault({.folder = folder});
        for (std::size_t number = 0; number < count; ++number)
            ASSERT_EQ(vault.load(writer + std::to_string(number), service),
                      (KeychainDictionary{{"name", writer}}));
        const auto inspection = vault.inspect();
        ASSERT_THAT(inspection.faults, IsEmpty());
        ASSERT_THAT(inspection.setAside, IsEmpty());
        for (const auto& entry : inspection.entries)
            ASSERT_TRUE(entry.dictionary) << entry.account << entry.fault;
    };
    killAndFind({3'000, 2, write, find});
}

TEST_F(StoreProcesses, LoseNoAcknowledgedSetInUserDefaultsWhenOneIsKilled) {
    constexpr std::size_t keyCount = 7;
    const auto file = folder / "user-defaults.sqlite";
    const auto keyOf = [](const std::string& writer, std::size_t number) {
        return writer + std::to_string(number % keyCount);
    };
    const auto valueOf = [](std::size_t number) {
        return std::to_string(number) + std::string(number * 97 % 3000, static_cast<char>('a' + number % 26));
    };
    const auto write = [&](const auto& writer, std::size_t count, const auto& written) {
        SQLiteUserDefaults defaults(
            {.file = file, .console = std::make_shared<ListeningConsole>(), .inBackground = {}});
        for (std::size_t number = 0; number < count; ++number) {
            defaults.setValue(valueOf(number), keyOf(writer, number));
            written();
        }
    };
    const auto find = [&](const std::string& writer, std::size_t count) {
        const auto inspection = SQLiteUserDefaults::inspect(file);
        ASSERT_EQ(inspection.fault, "");
        ASSERT_THAT(inspection.setAside, IsEmpty());
        for (std::size_t number = count < keyCount ? 0 : count - keyCount; number < count; ++number) {
            const auto& value = inspection.values.at(keyOf(writer, number));
            const bool isNext = number + keyCount == count && value == NSUserDefaults::Value(valueOf(count));
            ASSERT_TRUE(isNext || value == NSUserDefaults::Value(valueOf(number)))
                << number << " of " << count;
        }
    };
    killAndFind({15'000, 20, write, find});
}

// Each process adds the same accounts with its own letter, and says which it won.
TEST_F(StoreProcesses, LetExactlyOneOfThemAddAnAccountToAVault) {
    constexpr std::size_t accountCount = 10;
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (const char letter : {'a', 'b', 'c', 'd'})
        children.push_back(std::make_unique<ChildProcess>([this, letter](int out) {
            Vault vault({.folder = folder});
            for (std::size_t account = 0; account < accountCount; ++account) {
                char answer = letter;
                try {
                    vault.save({{"winner", std::string(1, letter)}}, std::to_string(account), service);
                } catch (const NSError& error) {
                    answer = isKeychainError(error, KeychainStatus::duplicateItem) ? '.' : '!';
                }
                if (::write(out, &answer, 1) != 1) ::_exit(2);
            }
        }));

    std::string winners(accountCount, '.');
    for (const auto& child : children) {
        const auto answers = child->readAll();
        ASSERT_EQ(answers.size(), accountCount);
        for (std::size_t account = 0; account < accountCount; ++account)
            if (answers[account] != '.') {
                EXPECT_EQ(std::exchange(winners[account], answers[account]), '.');
            }
    }
    const Vault vault({.folder = folder});
    for (std::size_t account = 0; account < accountCount; ++account)
        EXPECT_EQ(vault.load(std::to_string(account), service),
                  (KeychainDictionary{{"winner", winners.substr(account, 1)}}));
}

} // namespace
} // namespace corvantile
