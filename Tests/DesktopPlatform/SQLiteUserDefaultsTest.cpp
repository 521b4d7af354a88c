#include "DesktopPlatform/Foundation/SQLiteUserDefaults.hpp"

#include "DesktopPlatform/Storage/DefaultsFile.hpp"
#include "Platform/Foundation/Console.hpp"
#include "Tests/DesktopPlatform/ChildProcess.hpp"
#include "Tests/DesktopPlatform/FlushCount.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace corvantile {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ListeningConsole final : public Console {
public:
    void print(std::string_view text) override { lines.emplace_back(text); }
    std::vector<std::string> lines;
};

std::string contentOf(const fs::path& file) {
    if (!fs::is_regular_file(file)) return {};
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void overwrite(const fs::path& file, std::size_t offset, const std::string& bytes) {
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(offset))
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// A disk on which no file can grow beyond a size.
class SmallDisk {
public:
    explicit SmallDisk(std::uintmax_t largestFile) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{static_cast<rlim_t>(largestFile), before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_{};
};

class SQLiteUserDefaultsTest : public testing::Test {
protected:
    // A process's own view of the file.
    [[nodiscard]] std::unique_ptr<SQLiteUserDefaults> open() {
        return std::make_unique<SQLiteUserDefaults>(UserDefaultsOptions{
            .file = file_, .console = console_, .inBackground = [this](std::function<void()> work) {
                waiting_.push_back(std::move(work));
            }});
    }

    // Enough for several pages, all of them in the file itself and none in its log.
    void fill() {
        const auto defaults = open();
        for (int i = 0; i < valueCount; ++i) defaults->setValue(std::string(500, 'v'), std::to_string(i));
        DefaultsFile::emptyLog(file_);
        fs::remove(fileName("-wal"));
        fs::remove(fileName("-shm"));
    }

    [[nodiscard]] fs::path fileName(const std::string& suffix) const { return fs::path(file_) += suffix; }
    [[nodiscard]] const std::vector<std::string>& said() const { return console_->lines; }

    static constexpr int valueCount = 40;

    const TemporaryFolder folder_;
    const fs::path file_ = folder_.path() / "state" / "user-defaults.sqlite";
    const std::shared_ptr<ListeningConsole> console_ = std::make_shared<ListeningConsole>();
    std::vector<std::function<void()>> waiting_;
};

TEST_F(SQLiteUserDefaultsTest, MakesNothingUntilItIsAskedAndThenFilesOfTheUserAlone) {
    const auto defaults = open();
    defaults->beginTurn();
    EXPECT_FALSE(fs::exists(file_.parent_path()));

    defaults->setBool(true, "key");

    EXPECT_EQ(fs::status(file_.parent_path()).permissions(), fs::perms::owner_all);
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(file_.parent_path())) {
        names.push_back(entry.path().filename());
        EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write)
            << entry.path();
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre("user-defaults.sqlite", "user-defaults.sqlite-wal",
                                                     "user-defaults.sqlite-shm"));
}

TEST_F(SQLiteUserDefaultsTest, SetsAFileAsideThatCannotBeUsedAndBeginsAnew) {
    const struct {
        const char* what;
        std::function<void(const fs::path&)> damage;
    } cases[] = {
        {"cut to nothing", [](auto& file) { fs::resize_file(file, 0); }},
        {"cut inside its header", [](auto& file) { fs::resize_file(file, 50); }},
        {"cut after its first page", [](auto& file) { fs::resize_file(file, 4096); }},
        {"cut in half", [](auto& file) { fs::resize_file(file, fs::file_size(file) / 2); }},
        {"another kind of file", [](auto& file) { std::ofstream(file) << "Dear diary,"; }},
        {"no header", [](auto& file) { overwrite(file, 0, std::string(100, 'x')); }},
        {"a page of noise", [](auto& file) { overwrite(file, 2 * 4096, std::string(4096, 'x')); }},
        {"another application's database",
         [](auto& file) {
             fs::remove(file);
             SqliteDatabase(file, SqliteDatabase::Missing::isMade)
                 .execute("CREATE TABLE defaults (key, value)");
         }},
        {"a folder", [](auto& file) { fs::remove(file), fs::create_directory(file); }},
        {"a link to nowhere", [](auto& file) { fs::remove(file), fs::create_symlink("nowhere", file); }},
    };
    for (const auto& [what, damage] : cases) {
        SCOPED_TRACE(what);
        fs::remove_all(file_.parent_path());
        console_->lines.clear();
        fill();
        damage(file_);
        const auto former = contentOf(file_);

        const auto defaults = open();
        EXPECT_THAT(defaults->dictionaryRepresentation(), IsEmpty());
        defaults->setValue("new", "key");

        EXPECT_EQ(open()->stringForKey("key"), "new");
        EXPECT_THAT(said(), ElementsAre(AllOf(HasSubstr("began anew"),
                                              HasSubstr("user-defaults.sqlite.set-aside-1"))));
        EXPECT_EQ(fs::symlink_status(fileName(".set-aside-1")).type() != fs::file_type::not_found, true);
        EXPECT_EQ(contentOf(fileName(".set-aside-1")), former);
    }
}

TEST_F(SQLiteUserDefaultsTest, LeavesALaterVersionsFileAlone) {
    fill();
    SqliteDatabase(file_, SqliteDatabase::Missing::fails).execute("PRAGMA user_version = 2");
    DefaultsFile::emptyLog(file_);
    const auto former = contentOf(file_);

    open()->setValue("value", "key");

    EXPECT_EQ(contentOf(file_), former);
    EXPECT_EQ(open()->valueForKey("key"), std::nullopt);
    EXPECT_THAT(said(), ElementsAre(HasSubstr("later version"), HasSubstr("later version")));
}

TEST_F(SQLiteUserDefaultsTest, TakesNoLogForItsOwnThatAFormerFileLeft) {
    open()->setValue("former", "key");
    fs::remove(file_);

    EXPECT_EQ(open()->valueForKey("key"), std::nullopt);
    EXPECT_TRUE(fs::exists(fileName(".set-aside-1-wal")));
}

TEST_F(SQLiteUserDefaultsTest, KeepsInMemoryWhatAFullDiskRefusesAndWritesItLater) {
    const auto defaults = open();
    defaults->setValue(std::string(50'000, 'x'), "removed"); // more than SQLite's index of the log takes
    defaults->setValue("before", "stored");
    {
        const SmallDisk full(fs::file_size(fileName("-wal")));
        defaults->setValue("1", "refused");
        defaults->setValue("2", "refused");
        defaults->removeObjectForKey("removed");
        EXPECT_FALSE(defaults->synchronize());

        EXPECT_EQ(defaults->stringForKey("refused"), "2");
        EXPECT_EQ(defaults->valueForKey("removed"), std::nullopt);
        EXPECT_EQ(open()->stringForKey("stored"), "before");
        EXPECT_EQ(open()->valueForKey("refused"), std::nullopt);
        EXPECT_THAT(said(), ElementsAre(HasSubstr("cannot be written")));
    }
    defaults->setValue("after", "stored");

    EXPECT_EQ(open()->dictionaryRepresentation(),
              (NSUserDefaults::Dictionary{{"refused", "2"}, {"stored", "after"}}));
    EXPECT_THAT(said(), ElementsAre(HasSubstr("cannot be written"), HasSubstr("written again")));
}

TEST_F(SQLiteUserDefaultsTest, WorksWithoutAFolderUntilThereCanBeOne) {
    std::ofstream(file_.parent_path()) << "a file in the folder's place";
    auto defaults = open();
    defaults->setValue("value", "key");
    defaults->setValue("value", "other");
    defaults->beginTurn();

    EXPECT_EQ(defaults->stringForKey("key"), "value");
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_THAT(said(), ElementsAre(HasSubstr("cannot be written")));

    fs::remove(file_.parent_path());
    defaults.reset(); // the last chance to write

    EXPECT_EQ(open()->stringForKey("key"), "value");
    EXPECT_THAT(said(), ElementsAre(HasSubstr("cannot be written"), HasSubstr("written again")));
}

TEST_F(SQLiteUserDefaultsTest, SavesWhatItKnowsOfAFileThatIsDamagedUnderItsHands) {
    fill();
    const auto ours = open();
    const auto theirs = open();
    const auto known = ours->dictionaryRepresentation();
    ASSERT_EQ(theirs->dictionaryRepresentation().size(), static_cast<std::size_t>(valueCount));

    overwrite(file_, 4096, std::string(fs::file_size(file_) - 4096, 'x'));
    theirs->setValue("written", "by another process");
    ours->beginTurn();

    EXPECT_EQ(ours->dictionaryRepresentation(), known);
    EXPECT_EQ(open()->dictionaryRepresentation(), known);
    theirs->beginTurn();
    EXPECT_EQ(theirs->dictionaryRepresentation(), known);
}

TEST_F(SQLiteUserDefaultsTest, BeginsAnewWhenItsFolderIsDeletedMeanwhile) {
    const auto defaults = open();
    defaults->setValue("value", "key");

    fs::remove_all(file_.parent_path());
    defaults->beginTurn();

    EXPECT_EQ(defaults->valueForKey("key"), std::nullopt);
    defaults->setValue("value", "other");
    EXPECT_EQ(open()->stringForKey("other"), "value");
}

TEST_F(SQLiteUserDefaultsTest, LooksForOthersWritesOncePerTurn) {
    const auto ours = open();
    const auto theirs = open();
    ours->setValue("old", "key");
    EXPECT_EQ(ours->stringForKey("key"), "old");

    theirs->setValue("new", "key");
    EXPECT_EQ(ours->stringForKey("key"), "old");
    ours->beginTurn();
    EXPECT_EQ(ours->stringForKey("key"), "new");
}

TEST_F(SQLiteUserDefaultsTest, LeavesALongLogToTheBackgroundAndWritesOverItThen) {
    const auto defaults = open();
    int sets = 0;
    while (waiting_.empty() && ++sets < 2 * SQLiteUserDefaults::longLog)
        defaults->setValue(std::to_string(sets), "key");
    const auto longest = fs::file_size(fileName("-wal"));
    ASSERT_EQ(waiting_.size(), 1U);
    EXPECT_GT(sets, SQLiteUserDefaults::longLog / 2);

    waiting_.front()();
    for (int more = 0; more < 100; ++more) defaults->setValue(std::to_string(++sets), "key");

    EXPECT_EQ(fs::file_size(fileName("-wal")), longest);
    EXPECT_EQ(waiting_.size(), 1U);
    EXPECT_EQ(open()->stringForKey("key"), std::to_string(sets));
}

TEST_F(SQLiteUserDefaultsTest, LeavesAloneWhatItDoesNotUnderstand) {
    fill();
    {
        SqliteDatabase database(file_, SqliteDatabase::Missing::fails);
        database.execute("DELETE FROM defaults;"
                         "INSERT INTO defaults VALUES (x'72', 1.5), (x'74', 'by hand'), (x'62', 7)");
    }
    const auto defaults = open();

    EXPECT_EQ(defaults->dictionaryRepresentation(),
              (NSUserDefaults::Dictionary{{"t", "by hand"}, {"b", true}}));
    defaults->setValue("value", "key");
    EXPECT_EQ(SqliteDatabase(file_, SqliteDatabase::Missing::fails)
                  .integer("SELECT count(*) FROM defaults WHERE key = x'72' AND value = 1.5"),
              1);
}

TEST_F(SQLiteUserDefaultsTest, LastsAsLongAsTheProcessWithoutAFile) {
    SQLiteUserDefaults defaults({.file = {}, .console = console_, .inBackground = {}});
    defaults.setValue("value", "key");
    defaults.beginTurn();

    EXPECT_EQ(defaults.dictionaryRepresentation(), (NSUserDefaults::Dictionary{{"key", "value"}}));
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_THAT(said(), IsEmpty());
}

TEST_F(SQLiteUserDefaultsTest, ShowsAFileWithoutChangingIt) {
    auto inspection = SQLiteUserDefaults::inspect(file_);
    EXPECT_THAT(inspection.values, IsEmpty());
    EXPECT_EQ(inspection.fault, "");
    EXPECT_FALSE(fs::exists(file_.parent_path()));

    open()->setBool(true, "key");
    inspection = SQLiteUserDefaults::inspect(file_);
    EXPECT_EQ(inspection.values, (NSUserDefaults::Dictionary{{"key", true}}));

    fs::resize_file(file_, 0);
    const auto log = contentOf(fileName("-wal"));
    EXPECT_NE(SQLiteUserDefaults::inspect(file_).fault, "");
    EXPECT_EQ(contentOf(fileName("-wal")), log);
    static_cast<void>(open()->dictionaryRepresentation());
    inspection = SQLiteUserDefaults::inspect(file_);
    EXPECT_EQ(inspection.fault, "");
    EXPECT_THAT(inspection.setAside, testing::Contains(fileName(".set-aside-1")));
}

TEST_F(SQLiteUserDefaultsTest, NeverWaitsForTheDiskButToSynchronizeAndInTheBackground) {
    const auto before = flushCount();
    const auto defaults = open();
    for (int number = 0; number < 2 * SQLiteUserDefaults::longLog; ++number)
        defaults->setValue(std::to_string(number), "key");
    defaults->removeObjectForKey("key");
    open()->setBool(true, "key");
    EXPECT_EQ(flushCount(), before);

    EXPECT_TRUE(defaults->synchronize());
    const auto afterSynchronize = flushCount();
    EXPECT_GT(afterSynchronize, before);

    ASSERT_FALSE(waiting_.empty());
    waiting_.back()();
    const auto afterEmptying = flushCount();
    EXPECT_GT(afterEmptying, afterSynchronize);
    defaults->setValue("value", "written over the emptied log");
    EXPECT_EQ(flushCount(), afterEmptying);
}

// A file as version 1 wrote it, to be read for ever.
TEST_F(SQLiteUserDefaultsTest, ReadsAFileOfVersionOne) {
    fs::create_directory(file_.parent_path());
    fs::copy_file(fs::path(CORVANTILE_GOLDEN_FOLDER) / "user-defaults-1.sqlite", file_);

    EXPECT_EQ(open()->dictionaryRepresentation(),
              (NSUserDefaults::Dictionary{
                  {"", "empty key"},
                  {"NUL\0key"s, "NUL\0text"s},
                  {"appconfig_Setting", "Z7QlJwNZAcRUJYTOnvAwsc8ejVuTufvRrjJKkvMgB5Nn\r\nOOO7"},
                  {"enter_grace_period_week", true},
                  {"no", false}}));
    EXPECT_THAT(said(), IsEmpty());
}

std::string valueOf(std::size_t number) {
    return std::to_string(number) + std::string(number * 97 % 3000, static_cast<char>('a' + number % 26));
}

constexpr std::size_t keyCount = 7;

std::string keyOf(const std::string& writer, std::size_t number) {
    return writer + std::to_string(number % keyCount);
}

// Several processes write, and one of them is killed at some moment. CORVANTILE_KILL_ROUNDS sets how often.
TEST_F(SQLiteUserDefaultsTest, LosesNoAcknowledgedSetWhenAProcessIsKilled) {
    const char* const asked = std::getenv("CORVANTILE_KILL_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 100;
    std::mt19937 random(11);
    std::uniform_int_distribution<int> microseconds(0, 15'000);
    const auto setFor = [this](const std::string& writer, std::size_t count) {
        return [this, writer, count](int out) {
            SQLiteUserDefaults defaults({.file = file_, .console = console_, .inBackground = {}});
            for (std::size_t number = 0; number < count; ++number) {
                defaults.setValue(valueOf(number), keyOf(writer, number));
                if (::write(out, "+", 1) != 1) return;
            }
        };
    };
    std::size_t acknowledged = 0;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        if (round % 20 == 0) fs::remove_all(file_.parent_path()); // making it is interrupted too
        const auto killedName = "killed " + std::to_string(round) + "-";
        const auto otherName = "other " + std::to_string(round) + "-";
        ChildProcess killed(setFor(killedName, 20'000));
        ChildProcess other(setFor(otherName, 20));
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        killed.kill();

        const auto killedCount = killed.readAll().size();
        ASSERT_EQ(other.readAll().size(), 20U);
        const auto inspection = SQLiteUserDefaults::inspect(file_);
        ASSERT_EQ(inspection.fault, "");
        ASSERT_THAT(inspection.setAside, IsEmpty());
        const auto expectLast = [&](const std::string& writer, std::size_t count) {
            for (std::size_t number = count < keyCount ? 0 : count - keyCount; number < count; ++number) {
                const auto& value = inspection.values.at(keyOf(writer, number));
                const bool isNext =
                    number + keyCount == count && value == NSUserDefaults::Value(valueOf(count));
                ASSERT_TRUE(isNext || value == NSUserDefaults::Value(valueOf(number)))
                    << number << " of " << count;
            }
        };
        expectLast(killedName, killedCount);
        expectLast(otherName, 20);
        acknowledged += killedCount;
    }
    EXPECT_GT(acknowledged, static_cast<std::size_t>(rounds));
}

} // namespace
} // namespace corvantile
