#include "CorvantilePlay/detail/CommandLine/LineReader.hpp"

#include "Tests/CorvantileTest/Matchers.hpp"

#include <array>
#include <cerrno>
#include <string_view>

#include <sys/mman.h>
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

TEST(LineReader, EndsAtALineThatIsLongerThanAnyCommand) {
    const std::string longest(LineReader::longestLine, 'a');
    const auto readerOf = [](const std::string& text) {
        const int file = ::memfd_create("lines", MFD_CLOEXEC);
        EXPECT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        ::lseek(file, 0, SEEK_SET);
        return file;
    };
    for (const bool isTooLong : {false, true}) {
        const int file =
            readerOf("say so\n" + longest + std::string(isTooLong ? 1 << 17 : 0, 'b') + "\nquit");
        LineReader reader(file);
        std::vector<std::string> lines;
        while (!reader.isAtEnd())
            if (reader.isReady())
                if (auto line = reader.next()) lines.push_back(std::move(*line));
        EXPECT_EQ(lines, isTooLong ? std::vector<std::string>{"say so"}
                                   : (std::vector<std::string>{"say so", longest, "quit"}));
        EXPECT_EQ(reader.error(), isTooLong ? EMSGSIZE : 0);
        ::close(file);
    }
}

} // namespace corvantile::tool::LineReaderTest
