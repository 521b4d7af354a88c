#include "CorvantilePlay/detail/CommandLine/LineReader.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

#include <unistd.h>

namespace corvantile::tool::LineReaderTest {

TEST(LineReader, NeverWaitsForALineNorForTheEndOfTheLast) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const auto write = [&](std::string_view text) {
        EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    };
    LineReader reader(ends[0]);
    EXPECT_FALSE(reader.isReady());
    write("laun");
    EXPECT_FALSE(reader.isReady());
    EXPECT_EQ(reader.next(), std::nullopt);
    write("ch\nactivate\n\nquit");

    for (const auto* const line : {"launch", "activate", ""}) {
        EXPECT_TRUE(reader.isReady());
        EXPECT_EQ(reader.next(), line);
    }
    EXPECT_FALSE(reader.isReady());
    EXPECT_FALSE(reader.isAtEnd());

    ::close(ends[1]);
    while (!reader.isReady()) {
    }
    EXPECT_EQ(reader.next(), "quit");
    EXPECT_TRUE(reader.isAtEnd());
    EXPECT_EQ(reader.next(), std::nullopt);
    ::close(ends[0]);
}

} // namespace corvantile::tool::LineReaderTest
