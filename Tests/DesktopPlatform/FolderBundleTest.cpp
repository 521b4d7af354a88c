#include "DesktopPlatform/DesktopPlatform.hpp"
#include "Platform/Foundation/NSBundle.hpp"
#include "Tests/DesktopPlatform/TemporaryFolder.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string_view>

namespace corvantile {

TEST(FolderBundle, FindsFilesOfItsFolderAndNoOthers) {
    using namespace std::string_view_literals;
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path() / "bundle" / "sub.txt");
    std::ofstream(folder.path() / "bundle" / "a.txt") << "inside";
    std::ofstream(folder.path() / "bundle" / "sub.txt" / "b.txt") << "below";
    std::ofstream(folder.path() / "secret.txt") << "outside";
    DesktopPlatform platform({.resourceFolder = folder.path() / "bundle"});

    const struct {
        std::string_view name, extension;
        std::optional<std::string> expected;
    } cases[] = {{"a", "txt", "inside"},
                 {"a", "json", std::nullopt},
                 {"", "txt", std::nullopt},
                 {"sub", "txt", std::nullopt},
                 {"sub.txt/b", "txt", std::nullopt},
                 {"../secret", "txt", std::nullopt},
                 {"a", "txt/../a.txt", std::nullopt},
                 {"a.txt\0"sv, "txt", std::nullopt}};
    for (const auto& [name, extension, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(NSBundle::main()->resource(name, extension), expected);
    }
}

} // namespace corvantile
