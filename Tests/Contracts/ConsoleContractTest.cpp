#include "Platform/Foundation/Console.hpp"
#include "Tests/Contracts/Harness.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

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

} // namespace
} // namespace corvantile
