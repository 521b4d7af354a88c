#include "CorvantilePlay/detail/Output/OutputFormat.hpp"

#include "CorvantilePlay/detail/Output/ToolProcess.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <limits>
#include <new>
#include <thread>

namespace corvantile::tool::OutputFormatTest {

using namespace std::chrono_literals;

TEST(TerminalFormat, ShowsOneReadableLineThatMovesNoCursor) {
    EXPECT_EQ(terminalLine({100min + 1999999us, "somebody", "error", "no"}),
              "100:01.999  somebody  error: no");
    EXPECT_EQ(terminalLine({0ns, "console", "console", "a\x1b[2J\rb\nc\td"}),
              "00:00.000  console  a\\u{1B}[2J\\u{0D}b\n                    c\td");
    const std::pair<const char*, const char*> cases[] = {
        {"ä 日本 😀 \xE2\x80\xA7", "ä 日本 😀 \xE2\x80\xA7"},
        {"\x7F\xC2\x80\xC2\x9F\xC2\xA0", "\\u{7F}\\u{80}\\u{9F}\xC2\xA0"},
        {"\xE2\x80\xA8\xE2\x80\xAE\xE2\x80\xAF", "\\u{2028}\\u{202E}\xE2\x80\xAF"},
        {"\xE2\x80\x8F\xE2\x81\xA6\xD8\x9C", "\\u{200F}\\u{2066}\\u{61C}"},
        {"\x9B\xFF\xE2\x80", "\\u{9B}\\u{FF}\\u{E2}\\u{80}"}, // not UTF-8
        {"\xE0\x82\x9B", "\\u{9B}"},                          // a longer form than needed
        {"a\nb\tc", "a\\u{0A}b\\u{09}c"},
    };
    for (const auto& [text, line] : cases) {
        EXPECT_EQ(visibleLine(text), line);
        EXPECT_EQ(visibleLine(line), line);
    }
    EXPECT_EQ(alignedLines({{"gems\nforged", "1"}, {"x", "2"}}),
              (std::vector<std::string>{"gems\\u{0A}forged  1", "x                 2"}));
}

TEST(ToolProcess, MakesAStatusAndALineOfAnyException) {
    const struct {
        std::function<ExitCode()> run;
        ExitCode code;
        const char* error;
    } cases[] = {
        {[] { return ExitCode::output; }, ExitCode::output, ""},
        {[]() -> ExitCode { throw UsageError("a\nb"); }, ExitCode::usage, "corvantile: a\n  b\n"},
        {[]() -> ExitCode { throw std::bad_alloc(); }, ExitCode::failed,
         "corvantile: there is not enough memory\n"},
        {[]() -> ExitCode { throw 1; }, ExitCode::failed,
         "corvantile: an exception without a text ended the call\n"},
    };
    for (const auto& [run, code, error] : cases) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(endingWithStatus(run), code);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), error);
    }
    const auto throwOnAnotherThread = [] {
        return endingWithStatus([] {
            std::thread([] { throw std::runtime_error("lost"); }).join();
            return ExitCode::success;
        });
    };
    EXPECT_EXIT(static_cast<void>(throwOnAnotherThread()), testing::ExitedWithCode(1), "corvantile: lost");
}

TEST(JSONLinesFormat, KeepsKindsOfValuesApartAndSurvivesTextThatIsNotUTF8) {
    EventValue::Map fields{{"a", 1},
                           {"b", *NSDecimalNumber::fromText("4.99")},
                           {"c", true},
                           {"d", EventValue::List{"x", nullptr}},
                           {"e", EventValue::Map{{"f", Date{0}}}},
                           {"g", std::numeric_limits<double>::infinity()}};
    EXPECT_EQ(
        jsonLine({1234567us, "host", "track", "t\n\xff\xC2\x9B\xE2\x80\xAE", fields}),
        R"({"kind":"track","time":1.234,"who":"host","text":"t\n�\u009B\u202E","a":1,"b":"4.99","c":true,)"
        R"("d":["x",null],"e":{"f":"2001-01-01T00:00:00Z"},"g":null})");
}

} // namespace corvantile::tool::OutputFormatTest
