#include "DesktopPlatform/Foundation/SQLiteUserDefaults.hpp"

#include "DesktopPlatform/Storage/DefaultsFile.hpp"
#include "Tests/DesktopPlatform/FlushCount.hpp"
#include "Tests/DesktopPlatform/StoreFiles.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvantile {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

void overwrite(const fs::path& file, std::size_t offset, const std::string& bytes) {
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(offset))
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

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
        emptyStateLog(file_, DefaultsFile::format);
        removeLog(file_);
    }

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
    for (const auto* const suffix : {"", "-wal", "-shm"})
        EXPECT_EQ(fs::status(beside(file_, suffix)).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write)
            << suffix;
}

TEST_F(SQLiteUserDefaultsTest, SetsAFileAsideThatCannotBeUsedAndBeginsAnew) {
    const std::function<void()> damages[] = {
        [&] { fs::resize_file(file_, 0); },
        [&] { writeFile(file_, "Dear diary,"); },
        [&] { overwrite(file_, 2 * 4096, std::string(4096, 'x')); },
        [&] {
            fs::remove(file_);
            SqliteDatabase(file_, SqliteDatabase::Missing::isMade)
                .execute("CREATE TABLE defaults (key, value)");
        },
        [&] { fs::remove(file_), fs::create_directory(file_); },
        [&] { fs::remove(file_), fs::create_symlink("nowhere", file_); },
    };
    int number = 0;
    for (const auto& damage : damages) {
        SCOPED_TRACE(++number);
        fs::remove_all(file_.parent_path());
        console_->lines.clear();
        fill();
        damage();
        const auto former = bytesOf(file_);

        const auto defaults = open();
        EXPECT_THAT(defaults->dictionaryRepresentation(), IsEmpty());
        defaults->setValue("new", "key");

        EXPECT_EQ(open()->stringForKey("key"), "new");
        EXPECT_THAT(console_->lines, ElementsAre(AllOf(HasSubstr("began anew"),
                                                       HasSubstr("user-defaults.sqlite.set-aside-1"))));
        EXPECT_TRUE(fs::exists(fs::symlink_status(beside(file_, ".set-aside-1"))));
        EXPECT_EQ(bytesOf(beside(file_, ".set-aside-1")), former);
    }
}

TEST_F(SQLiteUserDefaultsTest, LeavesALaterVersionsFileAlone) {
    fill();
    SqliteDatabase(file_, SqliteDatabase::Missing::fails).execute("PRAGMA user_version = 2");
    emptyStateLog(file_, DefaultsFile::format);
    const auto former = bytesOf(file_);

    open()->setValue("value", "key");

    EXPECT_EQ(bytesOf(file_), former);
    EXPECT_EQ(open()->valueForKey("key"), std::nullopt);
    EXPECT_THAT(console_->lines, ElementsAre(HasSubstr("later version"), HasSubstr("later version")));
}

TEST_F(SQLiteUserDefaultsTest, TakesNoLogForItsOwnThatAFormerFileLeft) {
    open()->setValue("former", "key");
    fs::remove(file_);

    EXPECT_EQ(open()->valueForKey("key"), std::nullopt);
    EXPECT_TRUE(fs::exists(beside(file_, ".set-aside-1-wal")));
}

TEST_F(SQLiteUserDefaultsTest, KeepsInMemoryWhatAFullDiskRefusesAndWritesItLater) {
    const auto defaults = open();
    defaults->setValue(std::string(50'000, 'x'), "removed"); // more than SQLite's index of the log takes
    defaults->setValue("before", "stored");
    {
        const SmallDisk full(fs::file_size(beside(file_, "-wal")));
        defaults->setValue("1", "refused");
        defaults->setValue("2", "refused");
        defaults->removeObjectForKey("removed");
        EXPECT_FALSE(defaults->synchronize());

        EXPECT_EQ(defaults->stringForKey("refused"), "2");
        EXPECT_EQ(defaults->valueForKey("removed"), std::nullopt);
        EXPECT_EQ(open()->stringForKey("stored"), "before");
        EXPECT_EQ(open()->valueForKey("refused"), std::nullopt);
        EXPECT_THAT(console_->lines, ElementsAre(HasSubstr("cannot be written")));
    }
    defaults->setValue("after", "stored");

    EXPECT_EQ(open()->dictionaryRepresentation(),
              (NSUserDefaults::Dictionary{{"refused", "2"}, {"stored", "after"}}));
    EXPECT_THAT(console_->lines, ElementsAre(HasSubstr("cannot be written"), HasSubstr("written again")));
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

TEST_F(SQLiteUserDefaultsTest, WaitsForTheDiskOnlyToSynchronizeAndInTheBackgroundWhereItEmptiesItsLog) {
    const auto flushesOf = [](const std::function<void()>& work) {
        const auto before = flushCount();
        work();
        return flushCount() - before;
    };
    const auto defaults = open();
    int sets = 0;
    const auto set = [&] { defaults->setValue(std::to_string(++sets), "key"); };
    EXPECT_EQ(flushesOf([&] {
                  while (waiting_.empty() && sets < 2 * SQLiteUserDefaults::longLog) set();
              }),
              0);
    const auto longest = fs::file_size(beside(file_, "-wal"));
    ASSERT_EQ(waiting_.size(), 1U);
    EXPECT_GT(sets, SQLiteUserDefaults::longLog / 2);
    EXPECT_GT(flushesOf([&] { EXPECT_TRUE(defaults->synchronize()); }), 0);

    EXPECT_GT(flushesOf(waiting_.front()), 0);
    EXPECT_EQ(flushesOf([&] {
                  for (int more = 0; more < 100; ++more) set();
              }),
              0);
    EXPECT_EQ(fs::file_size(beside(file_, "-wal")), longest); // written over from its beginning
    EXPECT_EQ(waiting_.size(), 1U);
    EXPECT_EQ(open()->stringForKey("key"), std::to_string(sets));
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
    EXPECT_THAT(console_->lines, IsEmpty());
}

} // namespace
} // namespace corvantile
