#include "CorvantilePlay/detail/Output/OutputFormat.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

namespace corvantile::tool::OutputFormatTest {

using namespace std::chrono_literals;

TEST(TerminalFormat, ShowsOneReadableLineThatMovesNoCursor) {
    EXPECT_EQ(terminalLine({100min + 1999999us, "somebody", "error", "no"}),
              "100:01.999  somebody  error: no");
    EXPECT_EQ(terminalLine({0ns, "console", "console", "a\x1b[2J\rb\nc\td"}),
              "00:00.000  console  a\\u{1B}[2J\\u{0D}b\n                    c\td");
}

TEST(JSONLinesFormat, KeepsKindsOfValuesApartAndSurvivesTextThatIsNotUTF8) {
    EventValue::Map fields{{"a", 1},
                           {"b", *NSDecimalNumber::fromText("4.99")},
                           {"c", true},
                           {"d", EventValue::List{"x", nullptr}},
                           {"e", EventValue::Map{{"f", Date{0}}}},
                           {"g", std::numeric_limits<double>::infinity()}};
    EXPECT_EQ(jsonLine({1234567us, "host", "track", "t\n\xff", fields}),
              R"({"kind":"track","time":1.234,"who":"host","text":"t\n�","a":1,"b":"4.99","c":true,)"
              R"("d":["x",null],"e":{"f":"2001-01-01T00:00:00Z"},"g":null})");
}

} // namespace corvantile::tool::OutputFormatTest
