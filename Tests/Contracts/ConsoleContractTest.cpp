#include "Platform/Foundation/Console.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace corvantile {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

template <class Harness>
class ConsoleContract : public PortContract<Harness> {
protected:
    // What reaches standard output while `body` runs.
    template <class Body>
    static std::string printed(const Body& body) {
        testing::internal::CaptureStdout();
        body();
        return testing::internal::GetCapturedStdout();
    }
};
TYPED_TEST_SUITE(ConsoleContract, Harnesses);

TYPED_TEST(ConsoleContract, PrintsTextsAsTheyAreAndInTheirDebugForm) {
    auto& console = *this->ports().console;

    const auto text = this->printed([&] {
        console.print("plain \"text\"\nin two lines");
        console.print("");
        console.print("nul \0 and \xFF"sv);
        console.debugPrint("a\tb");
    });

    EXPECT_EQ(text, "plain \"text\"\nin two lines\n\nnul \0 and \xFF\n\"a\\tb\"\n"s);
}

TYPED_TEST(ConsoleContract, KeepsTheLinesOfManyThreadsWhole) {
    constexpr int threadCount = 4;
    constexpr int linesEach = 250;
    auto& console = *this->ports().console;
    const auto line = [](int thread, int number) {
        // Longer and shorter ones, so that parts of lines would show.
        return std::to_string(thread) + ":" + std::string(static_cast<std::size_t>(number * 37 % 300), '=');
    };

    const auto text = this->printed([&] {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadCount; ++thread)
            threads.emplace_back([&, thread] {
                for (int number = 0; number < linesEach; ++number) console.print(line(thread, number));
            });
        for (auto& thread : threads) thread.join();
    });

    std::istringstream lines(text);
    std::vector<int> next(threadCount, 0);
    for (std::string found; std::getline(lines, found);) {
        const auto thread = static_cast<std::size_t>(found.at(0) - '0');
        ASSERT_LT(thread, next.size());
        ASSERT_EQ(found, line(static_cast<int>(thread), next[thread]++));
    }
    EXPECT_EQ(next, std::vector<int>(threadCount, linesEach));
}

} // namespace
} // namespace corvantile
