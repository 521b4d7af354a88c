#include "CorvantileDesktop/Foundation/SQLiteUserDefaults.hpp"

#include "Tests/CorvantileDesktop/FlushCount.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"

namespace corvantile::SQLiteUserDefaultsTest {

namespace fs = std::filesystem;
using namespace std::string_literals;

class SQLiteUserDefaultsTest : public testing::Test {
protected:
    // A process's own view of the file.
    [[nodiscard]] std::unique_ptr<SQLiteUserDefaults> open() {
        return std::make_unique<SQLiteUserDefaults>(UserDefaultsOptions{
            .file = file_, .console = console_, .inBackground = [this](std::function<void()> work) {
                waiting_.push_back(std::move(work));
            }});
    }

    const TemporaryFolder folder_;
    const fs::path file_ = folder_.path() / "state" / "user-defaults.sqlite";
    const std::shared_ptr<ListeningConsole> console_ = std::make_shared<ListeningConsole>();
    std::vector<std::function<void()>> waiting_;
};

TEST_F(SQLiteUserDefaultsTest, TakesNoLogForItsOwnThatAFormerFileLeft) {
    const auto former = open();
    former->setValue("former", "key");
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
    for (int i = 0; i < 40; ++i) open()->setValue(std::string(500, 'v'), std::to_string(i));
    alter(file_, "PRAGMA wal_checkpoint(TRUNCATE)");
    const auto ours = open();
    const auto theirs = open();
    const auto known = ours->dictionaryRepresentation();
    ASSERT_EQ(theirs->dictionaryRepresentation(), known);

    writeFile(file_, bytesOf(file_).replace(4096, std::string::npos, 6 * 4096, 'x'));
    theirs->setValue("written", "by another process");
    ours->beginTurn();

    EXPECT_EQ(ours->dictionaryRepresentation(), known);
    EXPECT_EQ(open()->dictionaryRepresentation(), known);
    theirs->beginTurn();
    EXPECT_EQ(theirs->dictionaryRepresentation(), known);
}

TEST_F(SQLiteUserDefaultsTest, WaitsForTheDiskOnlyToSynchronizeAndInTheBackgroundWhereItEmptiesItsLog) {
    const auto defaults = open();
    int sets = 0;
    const auto set = [&] { defaults->setValue(std::to_string(++sets), "key"); };
    EXPECT_EQ(flushesOf(set), 0);
    ASSERT_EQ(waiting_.size(), 1U); // a first value is moved out of the log soon
    waiting_.front()();
    waiting_.clear();
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
    EXPECT_LE(fs::file_size(beside(file_, "-wal")), longest); // written over from its beginning
    EXPECT_EQ(waiting_.size(), 1U);
    for (int burst = 0; burst < 5000; ++burst) set(); // faster than the background
    EXPECT_LT(fs::file_size(beside(file_, "-wal")), 1100 * 4120);
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

} // namespace corvantile::SQLiteUserDefaultsTest
