#include "CorvantileDesktop/Keychain/Vault.hpp"

#include "CorvantileDesktop/Keychain/detail/MasterKey.hpp"
#include "CorvantilePlatform/Keychain/KeychainError.hpp"
#include "Tests/CorvantileDesktop/FlushCount.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"

#include <atomic>
#include <cstdio>

#include <sys/stat.h>

namespace corvantile::VaultTest {

namespace fs = std::filesystem;

using namespace std::string_literals;

constexpr const char* service = "com.example.app";
constexpr auto privateFile = fs::perms::owner_read | fs::perms::owner_write;
const KeychainDictionary entry = {{"number", 1}};

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
        alter(file, "PRAGMA wal_checkpoint(TRUNCATE)");
    }

    // What the change is refused with.
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
    const std::shared_ptr<ListeningConsole> console = std::make_shared<ListeningConsole>();
};

TEST_F(VaultTest, ReadsWhatTheFirstVersionWrote) {
    fs::create_directories(folder);
    fs::permissions(folder, fs::perms::owner_all);
    for (const auto& path : {key, file}) {
        fs::copy_file(fs::path(CORVANTILE_GOLDEN_FOLDER) / "keychain-1" / path.filename(), path);
        fs::permissions(path, privateFile);
    }
    auto vault = open();

    EXPECT_EQ(vault.load("everything", service), (KeychainDictionary{{"t", "ä"},
                                                                     {"b", true},
                                                                     {"i", -2},
                                                                     {"r", -0.5},
                                                                     {"d", Date{725846400.1}},
                                                                     {"x", KeychainData{0, 255}}}));
    EXPECT_EQ(vault.load("\0"s, ""), KeychainDictionary{});
}

// A mapping's flags, as the system tells them.
std::string flagsOfMapping(const void* address) {
    std::ifstream maps("/proc/self/smaps");
    bool isInside = false;
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin = 0, end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2)
            isInside = reinterpret_cast<unsigned long>(address) - begin < end - begin;
        if (isInside && line.starts_with("VmFlags:")) return line;
    }
    return "no mapping";
}

TEST_F(VaultTest, KeepsItsMasterKeyOutOfCoreDumps) {
    prepare();
    const auto master = MasterKey::read(*PrivateFolder::find(folder));

    EXPECT_THAT(flagsOfMapping(master.value().key().data()), HasSubstr(" dd"));
}

TEST_F(VaultTest, FlushesOnceForEachSaveAlsoOnceALongLogWasEmptiedInTheBackground) {
    std::vector<std::function<void()>> works;
    Vault vault({.folder = folder, .inBackground = [&](auto work) { works.push_back(std::move(work)); }});
    const auto flushesOfSaving = [&](const KeychainDictionary& dictionary, const std::string& account) {
        return flushesOf([&] { vault.save(dictionary, account, service); });
    };
    const auto large = KeychainDictionary{{"data", KeychainData(600'000)}};
    EXPECT_GT(flushesOfSaving(large, "0"), 1); // of folder, key and file
    ASSERT_THAT(works, SizeIs(1));             // a first save is moved out of the log soon
    works.front()();
    works.clear();
    int number = 1;
    for (; works.empty() && number < 20; ++number)
        EXPECT_EQ(flushesOfSaving(large, std::to_string(number)), 1) << number;
    const auto logSize = fs::file_size(beside(file, "-wal"));

    ASSERT_THAT(works, SizeIs(1));
    works.front()();
    for (const auto* const account : {"a", "b", "c"}) EXPECT_EQ(flushesOfSaving(entry, account), 1);

    EXPECT_LE(fs::file_size(beside(file, "-wal")), logSize); // written from its beginning again
    while (--number >= 0) EXPECT_EQ(vault.load(std::to_string(number), service), large);
}

// Each has a vault of its own, as processes have. Looking for an entry makes none.
TEST_F(VaultTest, LetsExactlyOneOfSeveralAddAnAccountEvenWhereTheyMakeTheVault) {
    constexpr int accountCount = 10;
    EXPECT_EQ(open().load("0", service), std::nullopt);
    EXPECT_FALSE(open().remove("0", service));
    EXPECT_FALSE(fs::exists(folder.parent_path()));
    std::atomic<int> added{0};
    atOnce(4, [&](int) {
        auto vault = open();
        for (int account = 0; account < accountCount; ++account) {
            const auto error = refusal([&] {
                vault.save(entry, std::to_string(account), service);
                ++added;
            });
            EXPECT_TRUE(error.code() == 0 || isKeychainError(error, KeychainStatus::duplicateItem));
        }
    });

    EXPECT_EQ(added, accountCount);
    for (int account = 0; account < accountCount; ++account)
        EXPECT_EQ(open().load(std::to_string(account), service), entry);
}

TEST_F(VaultTest, SaysWhyAnEntryDoesNotRead) {
    prepare();
    // A box opens only where it was saved.
    alter(file, "UPDATE entries SET box = (SELECT box FROM entries WHERE account = x'6F74686572')"
                " WHERE account = x'6163636F756E74';"
                "UPDATE entries SET key = x'00', box = zeroblob(60) WHERE account = x'6F74686572'");
    Vault vault({.folder = folder, .console = console, .reportsUnreadableEntries = true});
    const std::pair<const char*, const char*> cases[] = {
        {"account", "it is damaged."}, {"other", "it was sealed under another master key."}};
    for (const auto& [account, fault] : cases) {
        EXPECT_EQ(vault.inspect().entries.at(0).fault, fault);
        EXPECT_EQ(vault.load(account, service), std::nullopt);
        EXPECT_THAT(console->lines, Contains(HasSubstr(fault)));
        EXPECT_THROW(vault.save(entry, account, service), NSError);
        vault.update(entry, account, service);
        EXPECT_EQ(vault.load(account, service), entry);
        EXPECT_TRUE(vault.remove(account, service));
    }
}

TEST_F(VaultTest, ReadsAgainOnceItsMasterKeyIsBackAndLosesNoneWhenItMakesANewOne) {
    prepare();
    const auto right = bytesOf(key);
    const auto vaultBytes = bytesOf(file);
    for (const auto& replacement : {right.substr(0, 16) + std::string(right.size() - 16, 'w'), ""s}) {
        fs::remove(key);
        if (!replacement.empty()) writeFile(key, replacement), fs::permissions(key, privateFile);
        auto vault = open();
        console->lines.clear();

        for (int load = 0; load < 2; ++load) EXPECT_EQ(vault.load("account", service), std::nullopt);
        EXPECT_THAT(console->lines, ElementsAre(AllOf(HasSubstr("account"), HasSubstr("master key."))));
        EXPECT_TRUE(isKeychainError(refusal([&] { vault.save({}, "account", service); }),
                                    KeychainStatus::duplicateItem));
        EXPECT_EQ(bytesOf(file), vaultBytes);
        EXPECT_EQ(bytesOf(key), replacement); // nor was a key made in place of the missing one

        writeFile(key, right);
        fs::permissions(key, privateFile);
        EXPECT_EQ(vault.load("account", service), entry); // also without a new launch
    }
    writeFile(key, "damaged");
    open().save(entry, "new", service);
    EXPECT_EQ(bytesOf(folder / "master.key.set-aside-1"), "damaged");
    EXPECT_EQ(open().load("new", service), entry);
}

TEST_F(VaultTest, RefusesAKeyThatOthersCanReach) {
    prepare();
    const std::pair<fs::path, const char*> cases[] = {
        {key, "Others can open master.key: its permissions must be 0600."},
        {folder, "Others can open the folder keychain: its permissions must be 0700."}};
    for (const auto& [path, text] : cases) {
        fs::permissions(path, fs::perms::group_exec, fs::perm_options::add);
        console->lines.clear();
        auto vault = open();

        EXPECT_EQ(vault.load("account", service), std::nullopt);
        const auto error = refusal([&] { vault.save(entry, "new", service); });
        EXPECT_TRUE(isKeychainError(error, KeychainStatus::notAvailable));
        EXPECT_THAT(error.localizedDescription(), HasSubstr(text));
        EXPECT_THAT(console->lines, ElementsAre(HasSubstr(text))); // once

        fs::permissions(path, fs::perms::group_exec, fs::perm_options::remove);
        EXPECT_EQ(vault.load("account", service), entry);
    }
    fs::remove(key);
    fs::create_directory(key);
    console->lines.clear();
    EXPECT_EQ(open().load("account", service), std::nullopt);
    EXPECT_THAT(console->lines, ElementsAre(HasSubstr("master.key is not a file.")));
}

// Its entries may well be there again later: a keychain that forgets would let purchases be reported twice.
TEST_F(VaultTest, RefusesToReplaceAFileThatItCannotOpen) {
    prepare();
    const auto away = folder / "away";
    fs::rename(file, away);
    const std::function<void()> obstacles[] = {[&] { fs::create_directory(file); },
                                               [&] { ::mkfifo(file.c_str(), 0600); },
                                               [&] { fs::create_symlink("nowhere", file); }};
    for (const auto& make : obstacles) {
        make();
        console->lines.clear();
        EXPECT_EQ(open().load("account", service), std::nullopt);
        EXPECT_THAT(console->lines, ElementsAre(HasSubstr("The vault")));
        EXPECT_THAT(open().inspect().faults, SizeIs(1));
        EXPECT_TRUE(
            isKeychainError(refusal([&] { open().save(entry, "new", service); }), KeychainStatus::io));
        fs::remove(file);
    }
    fs::rename(away, file);
    EXPECT_EQ(open().load("account", service), entry);

    fs::resize_file(file, 0);
    console->lines.clear();
    EXPECT_EQ(open().load("account", service), std::nullopt);
    EXPECT_THAT(console->lines, ElementsAre(HasSubstr("no vault"))); // it is not a new one
}

TEST_F(VaultTest, CarriesOverWhatADamagedFileStillHolds) {
    prepare();
    for (std::uint8_t number = 0; number < 50; ++number)
        open().save({{"data", KeychainData(400, number)}}, "account " + std::to_string(number), service);
    alter(file, "PRAGMA wal_checkpoint(TRUNCATE)");
    auto bytes = bytesOf(file);
    bytes.replace(bytes.size() / 4096 / 2 * 4096, 4096, 4096, '\0');
    writeFile(file, bytes);
    const auto left = open().inspect().entries;
    ASSERT_THAT(left, SizeIs(testing::Gt(40U))); // from both ends to the damaged page

    auto vault = open();
    vault.save(entry, "new", service);

    for (const auto& each : left) EXPECT_EQ(vault.load(each.account, service), each.dictionary);
    EXPECT_THAT(vault.inspect().entries, SizeIs(left.size() + 1));
    EXPECT_THAT(vault.inspect().faults, IsEmpty());
    EXPECT_EQ(bytesOf(folder / "vault.sqlite.set-aside-1"), bytes);
    EXPECT_THAT(console->lines, Contains(HasSubstr(std::to_string(left.size()) + " entries")));
}

} // namespace corvantile::VaultTest
