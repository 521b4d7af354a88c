#include "DesktopPlatform/Keychain/Vault.hpp"

#include "Platform/Foundation/Console.hpp"
#include "Platform/Foundation/NSError.hpp"
#include "Platform/Keychain/KeychainError.hpp"
#include "Tests/DesktopPlatform/ChildProcess.hpp"
#include "Tests/DesktopPlatform/FlushCount.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <thread>

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvantile {
namespace {

namespace fs = std::filesystem;

using namespace std::string_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::string service = "com.example.app";
const KeychainDictionary entry = {{"number", 1}};
constexpr auto anyMode = fs::perms::all;

class Lines final : public Console {
public:
    void print(std::string_view text) override { lines.emplace_back(text); }
    std::vector<std::string> lines;
};

std::string bytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
}

class VaultTest : public testing::Test {
protected:
    [[nodiscard]] Vault open() { return Vault({.folder = folder, .console = console}); }

    // A vault with two entries, in its file alone: the log is moved into it, as a backup would have it.
    void prepare() {
        {
            auto vault = open();
            vault.save(entry, "account", service);
            vault.save({{"key", "text"}}, "other", service);
        }
        alter("PRAGMA wal_checkpoint(TRUNCATE)");
    }

    void alter(const char* statements) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, statements, nullptr, nullptr, nullptr), SQLITE_OK) << statements;
        sqlite3_close(database);
    }

    static NSError refusal(const std::function<void()>& change) {
        try {
            change();
        } catch (const NSError& error) {
            return error;
        }
        return {"nothing was refused", 0};
    }

    const TemporaryFolder home;
    const fs::path folder = home.path() / "state" / "keychain";
    const fs::path file = folder / "vault.sqlite";
    const fs::path key = folder / "master.key";
    const std::shared_ptr<Lines> console = std::make_shared<Lines>();
};

TEST_F(VaultTest, ReadsWhatTheFirstVersionWrote) {
    fs::create_directories(folder);
    fs::permissions(folder, fs::perms::owner_all);
    for (const auto& path : {key, file}) {
        fs::copy_file(fs::path(CORVANTILE_GOLDEN_FOLDER) / "keychain-1" / path.filename(), path);
        fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    }
    auto vault = open();

    EXPECT_EQ(vault.load("everything", service), (KeychainDictionary{{"t", "ä"},
                                                                     {"b", true},
                                                                     {"i", -2},
                                                                     {"r", -0.5},
                                                                     {"d", Date{725846400.1}},
                                                                     {"x", KeychainData{0, 255}}}));
    EXPECT_EQ(vault.load("\0"s, ""), KeychainDictionary{});
    vault.save(entry, "account", service);
    EXPECT_EQ(vault.load("account", service), entry);
}

TEST_F(VaultTest, IsOpenToItsUserAlone) {
    const auto before = ::umask(0);
    prepare();
    ::umask(before);

    const auto modeOf = [](const fs::path& path) { return fs::status(path).permissions() & anyMode; };
    EXPECT_EQ(modeOf(folder), fs::perms::owner_all);
    for (const auto& path : {key, file})
        EXPECT_EQ(modeOf(path), fs::perms::owner_read | fs::perms::owner_write) << path;
}

TEST_F(VaultTest, MakesNothingBeforeTheFirstSave) {
    auto vault = open();

    EXPECT_EQ(vault.load("account", service), std::nullopt);
    EXPECT_FALSE(vault.remove("account", service));
    EXPECT_THAT(vault.inspect().entries, IsEmpty());
    EXPECT_FALSE(fs::exists(folder.parent_path()));
    EXPECT_THAT(console->lines, IsEmpty());
}

TEST_F(VaultTest, RefusesToSaveWhereThereIsNoFolderForIt) {
    Vault vault({});

    EXPECT_EQ(vault.load("account", service), std::nullopt);
    EXPECT_TRUE(isKeychainError(refusal([&] { vault.save(entry, "account", service); }),
                                KeychainStatus::notAvailable));
}

TEST_F(VaultTest, FlushesOnceForEachSave) {
    auto vault = open();
    vault.save(entry, "first", service); // makes folder, key and file

    for (int number = 0; number < 20; ++number) {
        const int before = flushCount();
        vault.save(entry, std::to_string(number), service);
        EXPECT_EQ(flushCount() - before, 1) << number;
    }
    const int before = flushCount();
    EXPECT_THROW(vault.save(entry, "first", service), NSError);
    EXPECT_NE(vault.load("first", service), std::nullopt);
    EXPECT_EQ(flushCount(), before);
}

TEST_F(VaultTest, EmptiesALongLogInTheBackgroundAndStillFlushesOnceForEachSave) {
    std::vector<std::function<void()>> works;
    Vault vault({.folder = folder, .inBackground = [&](auto work) { works.push_back(std::move(work)); }});
    const auto large = KeychainDictionary{{"data", KeychainData(600'000)}};
    int number = 0;
    while (works.empty() && number < 20) vault.save(large, std::to_string(number++), service);
    const auto logFile = fs::path(file.string() + "-wal");
    const auto logSize = fs::file_size(logFile);

    ASSERT_THAT(works, SizeIs(1));
    works.front()();
    for (int i = 0; i < 3; ++i) {
        const int before = flushCount();
        vault.save(entry, "small" + std::to_string(i), service);
        EXPECT_EQ(flushCount() - before, 1);
    }

    EXPECT_EQ(fs::file_size(logFile), logSize); // written from its beginning again
    while (--number >= 0) EXPECT_EQ(vault.load(std::to_string(number), service), large);
}

TEST_F(VaultTest, SeesWhatAnotherProcessWrites) {
    auto mine = open();
    auto others = open();
    EXPECT_EQ(mine.load("account", service), std::nullopt);

    others.save(entry, "account", service);
    EXPECT_EQ(mine.load("account", service), entry);
    mine.update({{"number", 2}}, "account", service);
    EXPECT_EQ(others.load("account", service), (KeychainDictionary{{"number", 2}}));
    EXPECT_TRUE(others.remove("account", service));
    EXPECT_EQ(mine.load("account", service), std::nullopt);
}

TEST_F(VaultTest, ReadsTheRightEntryOrNoneWhateverByteIsFlipped) {
    prepare();
    const auto whole = bytesOf(file);
    const auto keyBytes = bytesOf(key);
    int unread = 0;
    const auto check = [&](const fs::path& damaged, std::string bytes, std::size_t place) {
        bytes[place] = static_cast<char>(bytes[place] ^ 0x10);
        write(damaged, bytes);
        const auto found = open().load("account", service);
        EXPECT_TRUE(!found || found == entry) << damaged << place;
        unread += found ? 0 : 1;
        EXPECT_EQ(bytesOf(damaged), bytes) << damaged << place;
        for (const auto* const suffix : {"-wal", "-shm"}) fs::remove(file.string() + suffix);
    };

    for (std::size_t place = 0; place < whole.size(); place += place < 100 ? 1 : 23)
        check(file, whole, place);
    EXPECT_GT(unread, 10);
    write(file, whole);
    unread = 0;
    for (std::size_t place = 0; place < keyBytes.size(); ++place) check(key, keyBytes, place);
    EXPECT_EQ(unread, 16 + 32); // the signature and the key itself; its identifier is for people only
    write(key, keyBytes);
    EXPECT_EQ(open().load("account", service), entry);
}

TEST_F(VaultTest, SaysWhyAnEntryDoesNotRead) {
    const struct {
        const char* alteration;
        const char* fault;
    } cases[] = {
        {"UPDATE entries SET box = CAST(substr(box, 1, 20) || iif(substr(box, 21, 1) = x'00', x'01', x'00')"
         " || substr(box, 22) AS BLOB) WHERE account = x'6163636F756E74'",
         "it is damaged."},
        {"UPDATE entries SET box = x'' WHERE account = x'6163636F756E74'", "it is damaged."},
        // A box opens only where it was saved.
        {"UPDATE entries SET box = (SELECT box FROM entries WHERE account = x'6F74686572')"
         " WHERE account = x'6163636F756E74'",
         "it is damaged."},
        {"UPDATE entries SET box = zeroblob(60), key = x'00' WHERE account = x'6163636F756E74'",
         "it was sealed under another master key."},
    };
    for (const auto& [alteration, fault] : cases) {
        SCOPED_TRACE(alteration);
        fs::remove_all(folder);
        console->lines.clear();
        prepare();
        alter(alteration);

        Vault vault({.folder = folder, .console = console, .reportsUnreadableEntries = true});

        EXPECT_EQ(vault.load("account", service), std::nullopt);
        EXPECT_EQ(vault.load("other", service), (KeychainDictionary{{"key", "text"}}));
        EXPECT_THAT(console->lines, ElementsAre(HasSubstr(fault)));
        EXPECT_EQ(vault.inspect().entries.at(0).fault, fault);
        EXPECT_THROW(vault.save(entry, "account", service), NSError);
        vault.update(entry, "account", service);
        EXPECT_EQ(vault.load("account", service), entry);
    }
}

TEST_F(VaultTest, ReadsAgainOnceItsMasterKeyIsBack) {
    prepare();
    const auto right = bytesOf(key);
    const auto vaultBytes = bytesOf(file);
    auto wrong = right;
    for (std::size_t i = 16; i < wrong.size(); ++i) wrong[i] = 'w';

    for (const auto& replacement : {std::optional(wrong), std::optional<std::string>()}) {
        if (replacement)
            write(key, *replacement);
        else
            fs::remove(key);
        auto vault = open();

        EXPECT_EQ(vault.load("account", service), std::nullopt);
        EXPECT_TRUE(isKeychainError(refusal([&] { vault.save({}, "account", service); }),
                                    KeychainStatus::duplicateItem));
        EXPECT_EQ(bytesOf(file), vaultBytes);
        EXPECT_EQ(fs::exists(key), replacement.has_value()); // nor was a key made in place of the missing one
        EXPECT_THAT(vault.inspect().faults, SizeIs(replacement ? 0 : 1));

        write(key, right);
        fs::permissions(key, fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_EQ(vault.load("account", service), entry); // also without a new launch
    }
}

TEST_F(VaultTest, SealsUnderTheKeyThatLastsWhenTheKeyIsReplacedMeanwhile) {
    auto vault = open();
    vault.save(entry, "before", service);
    fs::rename(key, folder / "kept");
    vault.save(entry, "between", service); // makes a new key
    fs::rename(folder / "kept", key);
    vault.save(entry, "after", service);

    EXPECT_EQ(open().load("before", service), entry);
    EXPECT_EQ(open().load("between", service), std::nullopt);
    EXPECT_EQ(open().load("after", service), entry);
}

TEST_F(VaultTest, RefusesAKeyThatOthersCanReach) {
    prepare();
    using fs::perms;
    const auto own = perms::owner_read | perms::owner_write;
    const struct {
        fs::path path;
        perms right;
        perms wrong;
        const char* text;
    } cases[] = {
        {key, own, own | perms::group_read, "Others can open master.key: its permissions must be 0600."},
        {key, own, own | perms::others_write, "Others can open master.key: its permissions must be 0600."},
        {folder, perms::owner_all, perms::owner_all | perms::group_exec,
         "Others can open the folder keychain: its permissions must be 0700."},
    };
    for (const auto& [path, right, wrong, text] : cases) {
        SCOPED_TRACE(text);
        fs::permissions(path, wrong);
        console->lines.clear();
        auto vault = open();

        EXPECT_EQ(vault.load("account", service), std::nullopt);
        const auto error = refusal([&] { vault.save(entry, "new", service); });
        EXPECT_TRUE(isKeychainError(error, KeychainStatus::notAvailable));
        EXPECT_THAT(error.localizedDescription(), HasSubstr(text));
        EXPECT_THAT(vault.inspect().faults, ElementsAre(HasSubstr(text)));
        EXPECT_THAT(console->lines, ElementsAre(HasSubstr(text))); // once

        fs::permissions(path, right);
        EXPECT_EQ(vault.load("account", service), entry);
    }
    fs::rename(key, home.path() / "elsewhere");
    fs::create_symlink(home.path() / "elsewhere", key);
    EXPECT_EQ(open().load("account", service), std::nullopt);
}

TEST_F(VaultTest, SetsAFileAsideThatDoesNotOpenWhenItMustWrite) {
    prepare();
    const auto whole = bytesOf(file);
    const std::pair<const char*, std::function<void()>> damages[] = {
        {"other bytes", [&] { write(file, "These are no tables. " + std::string(5000, '.')); }},
        {"cut short", [&] { write(file, whole.substr(0, 4096)); }},
        {"cut inside a page", [&] { write(file, whole.substr(0, 5000)); }},
        {"emptied under its log", [&] { write(file, ""), write(file.string() + "-wal", "log"); }},
        {"gone from its log", [&] { fs::remove(file), write(file.string() + "-wal", "log"); }},
        {"another program's tables",
         [&] { fs::remove(file), alter("CREATE TABLE mine (a); PRAGMA user_version = 9"); }},
        {"a changed table", [&] { alter("ALTER TABLE entries RENAME TO mine"); }},
    };
    for (const auto& [name, damage] : damages) {
        SCOPED_TRACE(name);
        for (const auto* const suffix : {"-wal", "-shm"}) fs::remove(file.string() + suffix);
        write(file, whole);
        damage();
        const auto damaged = bytesOf(file);
        console->lines.clear();
        auto vault = open();

        EXPECT_EQ(vault.load("account", service), std::nullopt);
        EXPECT_EQ(bytesOf(file), damaged);
        vault.save(entry, "new", service);
        EXPECT_EQ(vault.load("new", service), entry);

        EXPECT_THAT(console->lines,
                    Contains(HasSubstr("is damaged. It is kept as vault.sqlite.set-aside-1")));
        EXPECT_EQ(bytesOf(folder / "vault.sqlite.set-aside-1"), damaged);
        EXPECT_EQ(open().load("new", service), entry);
        for (const auto& path : vault.inspect().setAside) fs::remove(path);
    }
}

TEST_F(VaultTest, CarriesOverWhatADamagedFileStillHolds) {
    const auto accountOf = [](int number) { return std::to_string(number); };
    const auto entryOf = [](int number) {
        return KeychainDictionary{{"data", KeychainData(400, static_cast<std::uint8_t>(number))}};
    };
    constexpr int count = 50;
    {
        auto vault = open();
        for (int number = 10; number < 10 + count; ++number)
            vault.save(entryOf(number), accountOf(number), service);
    }
    alter("PRAGMA wal_checkpoint(TRUNCATE)");
    auto bytes = bytesOf(file);
    const auto page = bytes.size() / 4096 / 2 * 4096;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(page), 4096, '\0');
    write(file, bytes);
    std::vector<int> left;
    for (int number = 10; number < 10 + count; ++number)
        if (open().load(accountOf(number), service)) left.push_back(number);
    ASSERT_GT(left.size(), count / 2U);
    ASSERT_LT(left.size(), count);
    const auto found = open().inspect().entries.size(); // a look at all finds more than single loads
    EXPECT_GE(found, left.size());

    open().save(entry, "new", service);

    auto vault = open();
    for (const int number : left) EXPECT_EQ(vault.load(accountOf(number), service), entryOf(number));
    EXPECT_EQ(vault.inspect().entries.size(), found + 1);
    EXPECT_THAT(vault.inspect().faults, IsEmpty());
    EXPECT_EQ(bytesOf(folder / "vault.sqlite.set-aside-1"), bytes);
    EXPECT_THAT(console->lines, Contains(HasSubstr(std::to_string(found) + " entries")));
}

TEST_F(VaultTest, KeepsADamagedMasterKeyWhenItMakesANewOne) {
    prepare();
    write(key, "damaged");

    open().save(entry, "new", service);

    EXPECT_EQ(bytesOf(folder / "master.key.set-aside-1"), "damaged");
    EXPECT_THAT(console->lines, ElementsAre(HasSubstr("is kept as master.key.set-aside-1")));
    EXPECT_EQ(open().load("new", service), entry);
}

TEST_F(VaultTest, LeavesALaterVersionsFileAlone) {
    prepare();
    alter("PRAGMA user_version = 2; PRAGMA wal_checkpoint(TRUNCATE)");
    const auto before = bytesOf(file);
    auto vault = open();

    EXPECT_EQ(vault.load("account", service), std::nullopt);
    EXPECT_TRUE(
        isKeychainError(refusal([&] { vault.save(entry, "new", service); }), KeychainStatus::notAvailable));
    EXPECT_EQ(bytesOf(file), before);
    EXPECT_THAT(vault.inspect().setAside, IsEmpty());
    EXPECT_THAT(console->lines, ElementsAre(HasSubstr("later version")));
}

TEST_F(VaultTest, BeginsAnewWhereItsFolderWasTakenAway) {
    auto vault = open();
    vault.save(entry, "account", service);
    fs::remove_all(folder);

    vault.save(entry, "new", service);

    EXPECT_EQ(vault.load("new", service), entry);
    EXPECT_EQ(open().load("new", service), entry);
    EXPECT_EQ(vault.load("account", service), std::nullopt);
}

// Several processes add the same accounts at once, each with its own number; every account has one winner.
TEST_F(VaultTest, LetsExactlyOneOfSeveralProcessesAddAnAccount) {
    constexpr int processCount = 4;
    constexpr int accountCount = 10;
    for (const bool startsDamaged : {false, true}) {
        SCOPED_TRACE(startsDamaged);
        if (startsDamaged) write(file, "no vault");
        std::vector<std::unique_ptr<ChildProcess>> children;
        for (int number = 0; number < processCount; ++number)
            children.push_back(std::make_unique<ChildProcess>([this, number](int out) {
                Vault vault({.folder = folder});
                for (int account = 0; account < accountCount; ++account) {
                    const auto error = refusal([&] {
                        vault.save({{"winner", number}}, std::to_string(account), service);
                        if (::write(out, &account, sizeof account) != sizeof account) ::_exit(2);
                    });
                    if (error.code() != 0 && !isKeychainError(error, KeychainStatus::duplicateItem))
                        ::_exit(3);
                }
            }));

        std::vector<int> winners(accountCount, -1);
        for (int number = 0; number < processCount; ++number) {
            const auto won = children[static_cast<std::size_t>(number)]->readAll();
            EXPECT_TRUE(children[static_cast<std::size_t>(number)]->endedWell());
            for (std::size_t at = 0; at < won.size(); at += sizeof(int)) {
                int account = 0;
                won.copy(reinterpret_cast<char*>(&account), sizeof account, at);
                EXPECT_EQ(std::exchange(winners[static_cast<std::size_t>(account)], number), -1) << account;
            }
        }
        const auto vault = open();
        for (int account = 0; account < accountCount; ++account)
            EXPECT_EQ(vault.load(std::to_string(account), service),
                      (KeychainDictionary{{"winner", winners[static_cast<std::size_t>(account)]}}));
        EXPECT_THAT(vault.inspect().setAside, SizeIs(startsDamaged ? 1 : 0));
        for (const auto& path : fs::directory_iterator(folder)) fs::remove(path);
    }
}

// One process writes and is killed at some moment while another goes on. CORVANTILE_KILL_ROUNDS sets how
// often.
TEST_F(VaultTest, LosesNoAcknowledgedSaveWhenAProcessIsKilled) {
    const char* const asked = std::getenv("CORVANTILE_KILL_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 100;
    std::mt19937 random(7);
    std::uniform_int_distribution<std::size_t> savesBefore(0, 3);
    std::uniform_int_distribution<int> microsecondsLater(0, 3000);
    const auto saveInto = [this](const std::string& name, int count) {
        return [this, name, count](int out) {
            Vault vault({.folder = folder});
            for (int number = 0; number < count; ++number) {
                vault.save({{"name", name}}, name + std::to_string(number), service);
                if (::write(out, "+", 1) != 1) return;
            }
        };
    };
    std::size_t acknowledged = 0;

    for (int round = 0; round < rounds; ++round) {
        if (round % 20 == 0) fs::remove_all(folder); // making it is interrupted too
        const auto killedName = "killed" + std::to_string(round) + "-";
        const auto otherName = "other" + std::to_string(round) + "-";
        ChildProcess killed(saveInto(killedName, 1000));
        ChildProcess other(saveInto(otherName, 2));
        auto killedCount = killed.read(savesBefore(random)).size();
        // Somewhere within the next save: a kill needs a moment of real time.
        std::this_thread::sleep_for(std::chrono::microseconds(microsecondsLater(random)));
        killed.kill();

        killedCount += killed.readAll().size();
        ASSERT_EQ(other.readAll().size(), 2U) << round;
        ASSERT_TRUE(other.endedWell());
        const auto vault = open();
        for (const auto& [name, count] : {std::pair(killedName, killedCount), std::pair(otherName, 2UL)})
            for (std::size_t number = 0; number < count; ++number)
                ASSERT_EQ(vault.load(name + std::to_string(number), service),
                          (KeychainDictionary{{"name", name}}))
                    << round;
        acknowledged += killedCount;
        const auto inspection = vault.inspect();
        ASSERT_THAT(inspection.faults, IsEmpty());
        ASSERT_THAT(inspection.setAside, IsEmpty());
        for (const auto& found : inspection.entries)
            ASSERT_TRUE(found.dictionary) << found.account << found.fault;
    }
    EXPECT_GT(acknowledged, static_cast<std::size_t>(rounds) / 2);
}

} // namespace
} // namespace corvantile
