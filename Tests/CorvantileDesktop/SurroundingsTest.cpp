#include "CorvantileDesktop/DesktopOptions.hpp"
#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/detail/Application/LocalDevice.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Foundation/NSBundle.hpp"
#include "CorvantilePlatform/Network/NetworkReachabilityManager.hpp"
#include "Tests/CorvantileDesktop/StoreFiles.hpp"

#include <limits>

#include <unistd.h>

// What a desktop platform takes from around it: folders, the time zone, files, an identifier, names.
namespace corvantile::SurroundingsTest {

using namespace std::chrono_literals;
using namespace std::string_view_literals;

TEST(StateFolder, IsInTheUsersFolderForState) {
    ::setenv("HOME", "/home/someone", 1);
    const auto* const ofHome = "/home/someone/.local/state/corvantile/com.example.app";
    const std::pair<const char*, const char*> cases[] = {
        {"/var/state", "/var/state/corvantile/com.example.app"}, {"relative", ofHome}, {"", ofHome}};
    for (const auto& [environment, expected] : cases) {
        ::setenv("XDG_STATE_HOME", environment, 1);
        EXPECT_EQ(defaultStateFolder("com.example.app"), expected) << environment;
    }
}

TEST(StateFolderDeathTest, ABundleIdentifierThatLeadsElsewhereIsFatal) {
    EXPECT_DEATH(DesktopPlatform({.bundleIdentifier = "../other"}), "one file name");
}

TEST(SystemClock, KnowsTheLocalOffsetAtEachDate) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const auto* const changing = "CET-1CEST,M3.5.0,M10.5.0/3";
    const struct {
        const char* zone;
        double unixSeconds;
        std::chrono::seconds expected;
    } cases[] = {{"NST3:30", 0, -210min},
                 {changing, 1711846799.999, 1h},
                 {changing, 1711846800, 2h},
                 {"NST3:30", infinity, -210min},
                 {"NST3:30", std::numeric_limits<double>::quiet_NaN(), 0s}};
    for (const auto& [zone, unixSeconds, expected] : cases) {
        ::setenv("TZ", zone, 1);
        DesktopPlatform platform;
        EXPECT_EQ(platform.ports().clock->localOffset(Date::fromUnixSeconds(unixSeconds)), expected)
            << zone << " at " << unixSeconds;
    }
    ::unsetenv("TZ");
}

TEST(FolderBundle, FindsFilesOfItsFolderAndNoOthers) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path() / "bundle" / "sub.txt");
    std::ofstream(folder.path() / "bundle" / "a.txt") << "inside";
    std::ofstream(folder.path() / "bundle" / "sub.txt" / "b.txt") << "below";
    std::ofstream(folder.path() / "secret.txt") << "outside";
    DesktopPlatform platform({.resourceFolder = folder.path() / "bundle"});

    EXPECT_EQ(NSBundle::main()->resource("a", "txt"), "inside");
    const std::pair<std::string_view, std::string_view> others[] = {
        {"a", "json"},        {"", "txt"},           {"sub", "txt"},      {"sub.txt/b", "txt"},
        {"../secret", "txt"}, {"a", "txt/../a.txt"}, {"a.txt\0"sv, "txt"}};
    for (const auto& [name, extension] : others)
        EXPECT_EQ(NSBundle::main()->resource(name, extension), std::nullopt) << name << "." << extension;
}

// What a process of its own is told, and how many lines it prints.
std::optional<std::string> identifierIn(const std::filesystem::path& stateFolder, std::size_t lines = 0) {
    const auto console = std::make_shared<ListeningConsole>();
    DesktopPlatform platform({.stateFolder = stateFolder, .console = console});
    const auto identifier = UIDevice::current()->identifierForVendor();
    EXPECT_EQ(console->lines.size(), lines);
    return identifier;
}

TEST(LocalDevice, FindsItsVendorIdentifierAgainInASecondFile) {
    const TemporaryFolder home;
    const auto folder = home.path() / "made" / "when needed";
    const auto file = folder / "vendor-identifier", copy = folder / "vendor-identifier.copy";
    const auto identifier = identifierIn(folder).value();
    EXPECT_THAT(identifier,
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    auto altered = identifier;
    altered[30] = altered[30] == '0' ? '1' : '0';
    int kept = 0;
    for (const auto& damaged : {std::string(), std::string("not an identifier"), altered + "\n"}) {
        writeFile(file, damaged);
        EXPECT_THAT(inspectVendorIdentifier(folder).fault, testing::HasSubstr("damaged"));
        EXPECT_EQ(identifierIn(folder, 1), identifier);
        EXPECT_EQ(bytesOf(beside(file, ".set-aside-" + std::to_string(++kept))), damaged);
        EXPECT_EQ(identifierIn(folder), identifier);
    }
    std::filesystem::remove(file), std::filesystem::create_directory(file);
    EXPECT_EQ(identifierIn(folder, 1), identifier);
    writeFile(copy, altered);
    EXPECT_EQ(identifierIn(folder), identifier);
    EXPECT_NE(bytesOf(copy), altered);
    const std::string other = "FDF275A7-7CC6-4216-9E99-E29472363784"; // of a version that knows of no copy
    writeFile(file, other + "\n");
    EXPECT_EQ(identifierIn(folder), other);
    EXPECT_EQ(inspectVendorIdentifier(folder).fault, "");

    writeFile(file, altered.substr(1)), writeFile(copy, "");
    const auto made = identifierIn(folder, 1);
    EXPECT_NE(made, other);
    EXPECT_EQ(identifierIn(folder), made);
    EXPECT_EQ(identifierIn(file / "state"), std::nullopt); // a file is in the way
}

TEST(DesktopPlatform, DeletesWhatAKilledProcessHadNotPutInPlace) {
    const TemporaryFolder state;
    std::filesystem::create_directory(state.path() / "keychain");
    const auto ofTheDead = state.path() / "keychain" / "master.key.4194305-0.new"; // above every process
    const auto ofTheLiving = state.path() / ("receipt." + std::to_string(::getpid()) + "-0.new");
    for (const auto& file : {ofTheDead, ofTheLiving}) writeFile(file, "half");
    const DesktopPlatform platform({.stateFolder = state.path()});

    EXPECT_FALSE(std::filesystem::exists(ofTheDead));
    EXPECT_TRUE(std::filesystem::exists(ofTheLiving));
}

TEST(HostName, IsANameOrAnAddressAndNothingAroundIt) {
    DesktopPlatform platform;
    const auto isAccepted = [&](std::string_view host) {
        return platform.ports().reachability->make(host) != nullptr;
    };
    const std::string longest(253, 'a');
    for (const std::string_view host :
         {"www.example.com"sv, "my_host-2"sv, "192.0.2.1"sv, "2001:db8::1"sv, std::string_view(longest)})
        EXPECT_TRUE(isAccepted(host)) << host;
    for (const auto host : {""sv, "example.com:443"sv, "https://example.com"sv, "two words"sv,
                            "ex\xC3\xA4mple"sv, "::1\0"sv, "line\n"sv, "user@example.com"sv, "[::1]"sv})
        EXPECT_FALSE(isAccepted(host)) << host;
    EXPECT_FALSE(isAccepted(longest + "a"));
}

} // namespace corvantile::SurroundingsTest
