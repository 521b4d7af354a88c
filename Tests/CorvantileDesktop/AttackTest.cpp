#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileLocalStore/LocalStore.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Keychain/Locksmith.hpp"
#include "Tests/CorvantileDesktop/ChildProcess.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>

#include <fcntl.h>
#include <sys/stat.h>

// What damage to a state folder does to the next session: all is kept, or the loss is reported and a copy
// kept.
// `.ci/attack` sets CORVANTILE_ATTACK_ROUNDS; without it these tests are skipped.
namespace corvantile::AttackTest {

namespace fs = std::filesystem;

constexpr const char* catalogue = R"({"version": {"major": 4, "minor": 0},
    "products": [{"productID": "gold", "type": "Consumable", "displayPrice": "1"}]})";

int rounds() {
    const char* const asked = std::getenv("CORVANTILE_ATTACK_ROUNDS");
    return asked == nullptr ? 0 : std::atoi(asked);
}

unsigned seed() {
    const char* const asked = std::getenv("CORVANTILE_ATTACK_SEED");
    return asked == nullptr ? 1 : static_cast<unsigned>(std::atoi(asked));
}

class Attack : public testing::Test {
protected:
    void SetUp() override {
        if (rounds() == 0) GTEST_SKIP() << "CORVANTILE_ATTACK_ROUNDS says how long";
        writeFile(home.path() / "shop.storekit", catalogue);
    }

    [[nodiscard]] DesktopOptions options(int descriptor) const {
        return {.stateFolder = state,
                .consoleDescriptor = descriptor,
                .adjust = {.isOffline = true},
                .store = {.catalogue = home.path() / "shop.storekit"}};
    }

    // Writes something to every file. What one port refuses, the others still take.
    static void work(DesktopPlatform& platform, const std::string& name, int count) {
        const auto& ports = platform.ports();
        const auto attempt = [](auto act) {
            try {
                act();
            } catch (const NSError&) { // reported by the port
            }
        };
        auto config = ports.adjust->makeConfig("abcdefghijkl", ADJEnvironmentSandbox);
        ports.adjust->launch(std::move(config));
        for (int number = 0; number < count; ++number) {
            const auto key = name + std::to_string(number);
            attempt([&] { ports.keychain->save({{"key", key}}, key, "attack"); });
            ports.userDefaults->setValue(key + std::string(300, '.'), key);
            attempt([&] { platform.store().buyElsewhere("gold"); });
            ports.adjust->trackEvent(ADJEvent("abcdef"));
        }
        static_cast<void>(ports.device->identifierForVendor());
    }

    using Contents = std::set<std::string>;
    static Contents contents(DesktopPlatform& platform, const std::string& name, int count) {
        Contents found;
        const auto& ports = platform.ports();
        for (int number = 0; number < count; ++number) {
            const auto key = name + std::to_string(number);
            if (ports.keychain->load(key, "attack")) found.insert("keychain " + key);
            if (ports.userDefaults->valueForKey(key)) found.insert("defaults " + key);
        }
        try {
            for (const auto& purchase : platform.store().purchases())
                found.insert("purchase " + purchase.identifier);
        } catch (const NSError&) { // reported by the store
        }
        int packages = 0;
        for (const auto& package : platform.adjust().packages())
            if (package.kind != PackageKind::session) found.insert("package " + std::to_string(++packages));
        found.insert("vendor " + ports.device->identifierForVendor().value_or(""));
        return found;
    }

    // A session in a process of its own: what it printed, then a line for each thing that it found, then
    // "end".
    struct Session {
        Contents found;
        std::string console;
        bool hasEnded = false;
    };
    Session session(const std::string& former, const std::string& own) const {
        ChildProcess child([&](int out) {
            Contents found;
            {
                DesktopPlatform platform(options(out));
                found = contents(platform, former, 5);
                work(platform, own, 2);
                platform.runMainLoopFor(std::chrono::milliseconds(5));
            }
            std::string text;
            for (const auto& thing : found) text += "\n=" + thing;
            text += "\nend\n";
            for (std::size_t at = 0; at < text.size();)
                at += static_cast<std::size_t>(
                    std::max<ssize_t>(::write(out, text.data() + at, text.size() - at), 0));
        });
        Session seen;
        std::istringstream lines(child.readAll());
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with('='))
                seen.found.insert(line.substr(1));
            else if (line == "end")
                seen.hasEnded = true;
            else if (!line.empty() && !line.starts_with("Corvantile: Adjust has queued") &&
                     !line.starts_with("Corvantile: Adjust queues"))
                seen.console += line + "\n";
        }
        return seen;
    }

    [[nodiscard]] std::vector<fs::path> files() const {
        std::vector<fs::path> found;
        for (const auto& entry : fs::recursive_directory_iterator(state))
            if (entry.is_regular_file()) found.push_back(fs::relative(entry.path(), state));
        std::sort(found.begin(), found.end());
        return found;
    }

    void prepare() {
        fs::remove_all(prepared);
        fs::remove_all(state);
        {
            DesktopPlatform platform(options(console));
            work(platform, "former", 5);
            before = contents(platform, "former", 5);
        }
        fs::rename(state, prepared);
    }
    void restore() const {
        fs::remove_all(state);
        fs::copy(prepared, state, fs::copy_options::recursive);
    }

    // Everything is kept; or the console names what is lost, and a copy of `damaged` lies there.
    void expectKeptOrReported(const fs::path& damaged, bool isOneBit = false) const {
        const auto bytes = fs::is_regular_file(state / damaged) ? bytesOf(state / damaged) : std::string();
        const auto seen = session("former", "later");
        EXPECT_TRUE(seen.hasEnded) << "the session has crashed: " << seen.console;
        std::vector<std::string> lost;
        std::set_difference(before.begin(), before.end(), seen.found.begin(), seen.found.end(),
                            std::back_inserter(lost));
        // SQLite has no checksums: one bit of a key makes it another key. `doctor` finds that in a keychain.
        const bool isRenamed = isOneBit && lost.size() == 1 &&
                               (lost[0].starts_with("defaults ") || lost[0].starts_with("keychain "));
        if (lost.empty() || isRenamed) return;
        EXPECT_NE(seen.console, "") << "not reported: " << testing::PrintToString(lost);
        // A single entry that cannot be read stays in its file.
        const bool isOneEntry = seen.console.find("passes over a record") != std::string::npos ||
                                seen.console.find("cannot be read and counts as absent") != std::string::npos;
        EXPECT_TRUE(bytes.empty() || isOneEntry || isKept(bytes))
            << "no copy of what is lost: " << testing::PrintToString(lost) << "; printed: " << seen.console;
    }

    // As it was, since the session has refused it, or moved aside.
    [[nodiscard]] bool isKept(const std::string& bytes) const {
        for (const auto& entry : fs::recursive_directory_iterator(state))
            if (entry.is_regular_file() &&
                (bytesOf(entry.path()) == bytes ||
                 entry.path().filename().string().find(".set-aside-") != std::string::npos))
                return true;
        return false;
    }

    const TemporaryFolder home;
    const fs::path state = home.path() / "state", prepared = home.path() / "prepared";
    const int console = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    Contents before;
};

TEST_F(Attack, FlippedBytesAreSurvived) {
    prepare();
    restore();
    const auto all = files();
    std::mt19937 random(seed());
    for (int round = 0; round < rounds(); ++round) {
        const auto& file = all[random() % all.size()];
        restore();
        auto bytes = bytesOf(state / file);
        if (bytes.empty()) continue;
        const auto place = random() % bytes.size();
        bytes[place] = static_cast<char>(bytes[place] ^ (1 << (random() % 8)));
        SCOPED_TRACE(file.string() + ", byte " + std::to_string(place));
        writeFile(state / file, bytes);
        expectKeptOrReported(file, true);
    }
}

TEST_F(Attack, DamagedFilesAreSurvived) {
    prepare();
    restore();
    const auto all = files();
    std::mt19937 random(seed());
    const struct {
        const char* what;
        std::function<void(const fs::path& file)> damage;
        bool mustReport = true;
    } damages[] = {
        {"cut", [&](const fs::path& file) { fs::resize_file(file, random() % (fs::file_size(file) + 1)); }},
        {"cut to nothing", [](const fs::path& file) { fs::resize_file(file, 0); }},
        {"other text", [](const fs::path& file) { writeFile(file, "These are no records.\n"); }},
        {"a page of zeros",
         [](const fs::path& file) {
             auto bytes = bytesOf(file);
             writeFile(file, bytes.replace(bytes.size() / 2, 4096, 4096, '\0'));
         }},
        {"a folder", [](const fs::path& file) { fs::remove(file), fs::create_directories(file / "inside"); }},
        {"a FIFO", [](const fs::path& file) { fs::remove(file), ::mkfifo(file.c_str(), 0600); }},
        {"a link to nothing",
         [](const fs::path& file) { fs::remove(file), fs::create_symlink("nowhere", file); }},
        {"no rights", [](const fs::path& file) { fs::permissions(file, fs::perms::none); }},
        // A deleted file looks as one that was never there.
        {"deleted", [](const fs::path& file) { fs::remove(file); }, false},
    };
    int left = rounds();
    for (const auto& [what, damage, mustReport] : damages)
        for (const auto& file : all) {
            if (left-- == 0) return;
            restore();
            SCOPED_TRACE(file.string() + ": " + what);
            damage(state / file);
            if (mustReport) {
                expectKeptOrReported(file);
            } else {
                EXPECT_TRUE(session("former", "later").hasEnded);
            }
            // A keychain that cannot be opened is not replaced, and refuses what it is given.
            const auto last = session("later", "last");
            EXPECT_TRUE(last.hasEnded && (last.found.contains("keychain later0") || !last.console.empty()))
                << "the state is no longer usable";
        }
}

TEST_F(Attack, ProcessesAtOnceLoseNothing) {
    for (int round = 0; round < rounds(); ++round) {
        SCOPED_TRACE(round);
        fs::remove_all(state);
        const auto write = [&](const char* name) {
            return [&, name](int) {
                DesktopPlatform platform(options(console));
                work(platform, name, 5);
                static_cast<void>(platform.ports().userDefaults->synchronize());
            };
        };
        {
            ChildProcess one(write("one")), other(write("other"));
            static_cast<void>(one.readAll() + other.readAll());
        }
        DesktopPlatform platform(options(console));
        for (const auto* const name : {"one", "other"})
            EXPECT_EQ(contents(platform, name, 5).size(), 5u + 5 + 10 + 10 + 1) << name;
    }
}

} // namespace corvantile::AttackTest
