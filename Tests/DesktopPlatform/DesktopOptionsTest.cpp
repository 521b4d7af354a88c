#include "DesktopPlatform/DesktopOptions.hpp"
#include "DesktopPlatform/DesktopPlatform.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace corvantile {

TEST(DesktopOptions, KeepStateInTheUsersFolderForIt) {
    ::setenv("HOME", "/home/someone", 1);
    const struct {
        const char* environment;
        const char* expected;
    } cases[] = {{"/var/state", "/var/state/corvantile/com.example.app"},
                 {"relative", "/home/someone/.local/state/corvantile/com.example.app"},
                 {"", "/home/someone/.local/state/corvantile/com.example.app"}};
    for (const auto& [environment, expected] : cases) {
        SCOPED_TRACE(environment);
        ::setenv("XDG_STATE_HOME", environment, 1);
        EXPECT_EQ(defaultStateFolder("com.example.app"), expected);
    }
}

TEST(DesktopOptionsDeathTest, ABundleIdentifierThatLeadsElsewhereIsFatal) {
    for (const char* const identifier : {"", "..", "../other", "a/b"}) {
        SCOPED_TRACE(identifier);
        EXPECT_DEATH(DesktopPlatform({.bundleIdentifier = identifier}), "one file name");
    }
}

} // namespace corvantile
