#include "CorvantileDesktop/detail/Files/Quarantine.hpp"
#include "Tests/CorvantileDesktop/ChildProcess.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"
#include "Tests/CorvantileDesktop/TextFiles.hpp"

#include <random>
#include <thread>
#include <type_traits>

#include <sys/stat.h>

// What holds for each of the files that processes share.
namespace corvantile::StateFilesTest {

namespace fs = std::filesystem;

using Damage = void (*)(const fs::path& file);

const std::vector<Damage> damagesOfAll = {
    [](const fs::path& file) { writeFile(file, "These are no tables. " + std::string(5000, '.')); },
    [](const fs::path& file) { writeFile(file, bytesOf(file).substr(0, 5000)); },
    [](const fs::path& file) { alter(file, "PRAGMA application_id = 7; PRAGMA user_version = 9"); },
    [](const fs::path& file) {
        alter(file, "DROP TABLE IF EXISTS entries; DROP TABLE IF EXISTS defaults;"
                    "DROP TABLE IF EXISTS records; DROP TABLE IF EXISTS memory");
    },
    [](const fs::path& file) { fs::resize_file(file, 0), writeFile(beside(file, "-wal"), "log"); }};
const std::vector<Damage> damagesOfVaults = {
    [](const fs::path& file) { fs::remove(file), writeFile(beside(file, "-wal"), "log"); }};
const std::vector<Damage> damagesOfOthers = {
    [](const fs::path& file) { writeFile(file, bytesOf(file).replace(2 * 4096, 4096, 4096, 'x')); },
    [](const fs::path& file) { fs::resize_file(file, fs::file_size(file) - 1); }, // of its last page
    [](const fs::path& file) { fs::remove(file), fs::create_directory(file); },
    [](const fs::path& file) { fs::remove(file), fs::create_symlink("nowhere", file); }};

template <class Stored>
class StateFiles : public testing::Test {
protected:
    [[nodiscard]] Stored open() const { return Stored(file, console); }

    static std::string textOf(const std::string& name) { return name + std::string(name.size() * 97, '.'); }

    // A file of several pages, with nothing in its log.
    void prepare() const {
        for (int number = 0; number < 40; ++number) {
            const auto name = "former " + std::to_string(number);
            open().save(name, textOf(name));
        }
        alter(file, "PRAGMA wal_checkpoint(TRUNCATE)");
    }

    // A process that is killed, with everything but the first text in its log.
    void saveAndDie(int count, int from = 0) const {
        ChildProcess dying([&](int) {
            auto store = open();
            for (int number = from; number < from + count; ++number)
                store.save(std::to_string(number), "text");
            ::_exit(0);
        });
        EXPECT_EQ(dying.readAll(), "");
    }

    [[nodiscard]] std::string faultOf() const { return inspectState(file, Stored::format()).fault; }

    const TemporaryFolder home;
    const fs::path folder = home.path() / "state";
    const fs::path file = folder / Stored::fileName;
    const std::shared_ptr<ListeningConsole> console = std::make_shared<ListeningConsole>();
};

using Stores = testing::Types<TextsInVault, TextsInUserDefaults, TextsInStore, TextsInOutbox>;
TYPED_TEST_SUITE(StateFiles, Stores);

TYPED_TEST(StateFiles, AreMadeByTheFirstSaveForTheirUserAlone) {
    auto store = this->open();
    EXPECT_FALSE(fs::exists(this->folder));

    const auto before = ::umask(0);
    store.save("name", "text");
    ::umask(before);

    EXPECT_EQ(fs::status(this->folder).permissions(), fs::perms::owner_all);
    for (const auto& entry : fs::directory_iterator(this->folder))
        EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write) << entry;
}

TYPED_TEST(StateFiles, AreSetAsideWhenTheyCannotBeUsedAndBegunAnew) {
    this->prepare();
    const auto prepared = this->home.path() / "prepared";
    fs::rename(this->folder, prepared);
    auto damages = std::is_same_v<TypeParam, TextsInVault> ? damagesOfVaults : damagesOfOthers;
    damages.insert(damages.end(), damagesOfAll.begin(), damagesOfAll.end());
    int number = 0;
    for (const auto& damage : damages) {
        SCOPED_TRACE(++number);
        fs::remove_all(this->folder);
        fs::copy(prepared, this->folder, fs::copy_options::recursive);
        damage(this->file);
        const auto damaged = bytesOf(this->file), log = bytesOf(beside(this->file, "-wal"));
        this->console->lines.clear();
        auto store = this->open();
        this->console->callBack = [&] { store.save("from the console", ""); };

        store.save("new", "text");

        this->console->callBack = nullptr;
        auto texts = TypeParam::in(this->file);
        const auto carriedOver =
            std::erase_if(texts, [](const auto& text) { return text.first.starts_with("former"); });
        const bool isDamagedInside = damage == damagesOfOthers[0] || damage == damagesOfOthers[1];
        const bool mayCarryOver = std::is_same_v<TypeParam, TextsInOutbox> && isDamagedInside;
        EXPECT_EQ(carriedOver > 10, mayCarryOver);
        EXPECT_EQ(texts, (Texts{{"from the console", ""}, {"new", "text"}}));
        EXPECT_EQ(bytesOf(beside(this->file, ".set-aside-1")), damaged);
        EXPECT_EQ(bytesOf(beside(this->file, ".set-aside-1-wal")), log);
        EXPECT_THAT(quarantinedFiles(this->file), Not(IsEmpty()));
        EXPECT_THAT(this->console->lines,
                    ElementsAre(HasSubstr(std::string(TypeParam::fileName) + ".set-aside-1")));
    }
}

TYPED_TEST(StateFiles, AreFreedOfWhatStandsInTheWayOfTheirCompanions) {
    this->prepare();
    for (const auto* const suffix : {"-shm", "-journal", "-wal"}) {
        fs::remove(beside(this->file, suffix));
        fs::create_directory(beside(this->file, suffix));
        this->console->lines.clear();

        this->open().save(suffix, "text");

        EXPECT_THAT(this->console->lines, ElementsAre(HasSubstr(std::string(suffix) + ".set-aside-1")));
        EXPECT_EQ(TypeParam::in(this->file).count(suffix), 1U);
    }
    EXPECT_EQ(TypeParam::in(this->file).size(), 43U);

    fs::remove_all(this->folder);
    fs::create_directories(beside(this->file, ".new"));
    fs::permissions(this->folder, fs::perms::owner_all);
    this->open().save("new", "text");
    EXPECT_EQ(TypeParam::in(this->file), (Texts{{"new", "text"}}));
}

TYPED_TEST(StateFiles, KeepACopyWhereTheirLogIsDamagedAndSayThatWorkIsLost) {
    const auto log = beside(this->file, "-wal");
    const auto damageLog = [&] {
        auto bytes = bytesOf(log);
        bytes[bytes.size() / 2 / 4120 * 4120 + 100] ^= 1;
        writeFile(log, bytes);
        return bytes;
    };
    this->saveAndDie(8);
    const auto damaged = damageLog();
    const auto main = bytesOf(this->file);
    EXPECT_THAT(this->faultOf(), HasSubstr("log is damaged"));

    this->open().save("new", "text");

    const auto left = TypeParam::in(this->file);
    EXPECT_LT(left.size(), 9U);
    EXPECT_EQ(left.count("new"), 1U);
    EXPECT_EQ(bytesOf(beside(this->file, ".set-aside-1")), main);
    EXPECT_EQ(bytesOf(beside(this->file, ".set-aside-1-wal")), damaged);
    EXPECT_THAT(this->console->lines, ElementsAre(HasSubstr("what was written last is lost")));
    EXPECT_FALSE(fs::exists(log)); // emptied at the orderly end

    this->console->lines.clear();
    this->saveAndDie(8, 8);
    static_cast<void>(damageLog());
    this->saveAndDie(1, 16);
    this->open().save("newer", "text");
    EXPECT_THAT(this->console->lines, IsEmpty()); // what was cut off is not found again
}

// It had filled the new file and moved the old one away, and a part of what belongs to that.
TYPED_TEST(StateFiles, GoOnWithASuccessorThatAKilledProcessCouldNotName) {
    this->prepare();
    fs::copy_file(this->file, beside(this->file, ".new"));
    fs::rename(this->file, beside(this->file, ".set-aside-1"));
    writeFile(beside(this->file, "-wal"), "log of the old file");

    EXPECT_EQ(this->faultOf(), "");
    this->open().save("new", "text");

    EXPECT_EQ(TypeParam::in(this->file).size(), 41U);
    EXPECT_EQ(bytesOf(beside(this->file, ".set-aside-1-wal")), "log of the old file");
    EXPECT_THAT(this->console->lines, ElementsAre(HasSubstr(".set-aside-1")));
}

// Nothing can be made beside them, and their rows are in the log.
TYPED_TEST(StateFiles, AreReadInAReadOnlyFolder) {
    constexpr unsigned somebody = 65534;
    this->saveAndDie(3);
    fs::remove(beside(this->file, "-shm"));
    const auto reader = ::geteuid() == 0 ? somebody : ::geteuid();
    for (const auto& path : {this->home.path(), this->folder, this->file, beside(this->file, "-wal"),
                             this->folder / "master.key"})
        static_cast<void>(::chown(path.c_str(), reader, reader));
    fs::permissions(this->folder, fs::perms::owner_read | fs::perms::owner_exec);
    ChildProcess reading([&](int out) {
        if (::geteuid() == 0 && ::setuid(reader) != 0) ::_exit(2);
        const auto found = this->open().holds("1") && TypeParam::in(this->file).size() == 3;
        if (::write(out, found ? "+" : "-", 1) != 1) ::_exit(2);
    });
    EXPECT_EQ(reading.readAll(), "+");
    fs::permissions(this->folder, fs::perms::owner_all);
}

TYPED_TEST(StateFiles, OfALaterVersionAreLeftAlone) {
    this->prepare();
    alter(this->file, "PRAGMA user_version = 2; PRAGMA wal_checkpoint(TRUNCATE)");
    const auto before = bytesOf(this->file);

    this->console->print(thrownText<NSError>([&] { this->open().save("new", "text"); }));

    EXPECT_EQ(bytesOf(this->file), before);
    EXPECT_THAT(quarantinedFiles(this->file), IsEmpty());
    EXPECT_THAT(this->console->lines, Contains(HasSubstr("later version")));
}

// One process writes and is killed at some moment while another goes on. CORVANTILE_KILL_ROUNDS sets how
// often.
TYPED_TEST(StateFiles, LoseNothingAcknowledgedWhenAProcessIsKilled) {
    constexpr std::size_t ofOther = 5;
    const auto nameOf = [](int round, const char* writer, std::size_t number) {
        return std::to_string(round) + writer + std::to_string(number);
    };
    const auto write = [&](int round, const char* writer, std::size_t count) {
        return [&, round, writer, count](int out) {
            auto store = this->open();
            for (std::size_t number = 0; number < count; ++number) {
                const auto name = nameOf(round, writer, number);
                store.save(name, this->textOf(name));
                if (::write(out, "+", 1) != 1) ::_exit(2);
            }
        };
    };
    const char* const asked = std::getenv("CORVANTILE_KILL_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 60;
    std::mt19937 random(7);
    std::uniform_int_distribution<std::size_t> writesBefore(0, 3);
    std::uniform_int_distribution<int> microsecondsLater(0, 5'000);
    std::size_t acknowledged = 0;
    for (int round = 0; round < rounds && !this->HasFailure(); ++round) {
        if (round % 4 == 0) fs::remove_all(this->folder); // making it is interrupted too
        ChildProcess killed(write(round, " killed ", 20'000));
        ChildProcess other(write(round, " other ", ofOther));
        auto count = killed.read(writesBefore(random)).size();
        // Somewhere within the next write: a kill needs a moment of real time.
        std::this_thread::sleep_for(std::chrono::microseconds(microsecondsLater(random)));
        killed.kill();
        count += killed.readAll().size();
        acknowledged += count;
        EXPECT_EQ(other.readAll().size(), ofOther);

        const auto texts = TypeParam::in(this->file);
        for (const auto& [name, text] : texts) EXPECT_EQ(text, this->textOf(name));
        for (std::size_t number = 0; number < count; ++number)
            EXPECT_TRUE(texts.contains(nameOf(round, " killed ", number))) << number;
        for (std::size_t number = 0; number < ofOther; ++number)
            EXPECT_TRUE(texts.contains(nameOf(round, " other ", number))) << number;
        EXPECT_THAT(quarantinedFiles(this->file), IsEmpty());
    }
    EXPECT_GT(acknowledged, static_cast<std::size_t>(rounds) / 2);
}

} // namespace corvantile::StateFilesTest
