#include "Tools/corvantile/LineReader.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace corvantile::tool {
namespace {

using Pipe = std::array<int, 2>;

Pipe makePipe() {
    Pipe ends{};
    EXPECT_EQ(::pipe(ends.data()), 0);
    return ends;
}

class LineReaderTest : public testing::Test {
protected:
    ~LineReaderTest() override {
        ::close(ends_[0]);
        if (ends_[1] >= 0) ::close(ends_[1]);
    }

    void write(std::string_view text) {
        EXPECT_EQ(::write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void endInput() { ::close(std::exchange(ends_[1], -1)); }

    Pipe ends_ = makePipe();
    LineReader reader_{ends_[0]};
};

TEST_F(LineReaderTest, NeverWaitsForALine) {
    EXPECT_FALSE(reader_.isReady());
    write("laun");
    EXPECT_FALSE(reader_.isReady());
    EXPECT_EQ(reader_.next(), std::nullopt);
    write("ch\nactivate\n\n");

    EXPECT_TRUE(reader_.isReady());
    EXPECT_EQ(reader_.next(), "launch");
    EXPECT_TRUE(reader_.isReady());
    EXPECT_EQ(reader_.next(), "activate");
    EXPECT_EQ(reader_.next(), "");
    EXPECT_FALSE(reader_.isReady());
    EXPECT_FALSE(reader_.isAtEnd());
}

TEST_F(LineReaderTest, TakesALastLineWithoutItsEnd) {
    write("quit");
    endInput();

    while (!reader_.isReady()) {
    }
    EXPECT_FALSE(reader_.isAtEnd());
    EXPECT_EQ(reader_.next(), "quit");
    EXPECT_TRUE(reader_.isAtEnd());
    EXPECT_EQ(reader_.next(), std::nullopt);
}

} // namespace
} // namespace corvantile::tool
