#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile::tool::CommandWordsTest {

using std::chrono::milliseconds;

std::vector<std::string> texts(std::string_view line) {
    std::vector<std::string> texts;
    for (const auto& word : splitWords(line)) texts.push_back(word.text);
    return texts;
}

EventParameters parameters(std::string_view line) { return parseParameters(splitWords(line)).value(); }

TEST(Words, ArePartedByBlanksOutsideQuotes) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"", {}},
        {"  \t\r", {}},
        {"# all of it", {}},
        {"track open  # with a comment\r", {"track", "open"}},
        {"track a#b", {"track", "a#b"}},
        {R"(a "b c" 'd e'f "")", {"a", "b c", "d ef", ""}},
        {R"("\"\\\n\t\q" '\n')", {"\"\\\n\t\\q", "\\n"}},
        {R"(k="a b" k='#' it's "it's")", {"k=a b", "k=#", "it's", "it's"}},
    };
    for (const auto& [line, words] : cases) EXPECT_EQ(texts(line), words) << line;
    EXPECT_THROW(static_cast<void>(splitWords("say \"hello")), UsageError);
}

TEST(Values, AreReadByTheirForm) {
    const std::pair<const char*, EventValue> cases[] = {
        {"true", true},
        {"True", "True"},
        {"-3", -3},
        {"007", "007"},
        {"9223372036854775808", NSDecimalNumber(9223372036854775808U)},
        {"4.990", *NSDecimalNumber::fromText("4.99")},
        {"1e3", NSDecimalNumber(1000)},
        {"1.", "1."},
        {"-", "-"},
        {"0x10", "0x10"},
        {"2001-01-01", Date{0}},
        {"2001-01-02T00:00:01Z", Date{86401}},
        {"2023-02-29", "2023-02-29"},
        {"2023-02-28T24:00:00Z", "2023-02-28T24:00:00Z"},
        {"", ""},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(parseValue(text), value) << text;
}

TEST(Values, AreDescribedAsACommandWritesThemWithQuotesAroundText) {
    const auto* const line =
        R"("#"=1 a="3" "a b=c"="4" b="x y\"\\\n" c=it d=4.99 e=2024-02-29T12:00:00Z f=true g="" h=a=b)";
    EXPECT_EQ(describeParameters(parameters(line)), line);
}

TEST(Values, NoParametersAreNotTheSameAsEmptyOnes) {
    EXPECT_EQ(parseParameters({}), std::nullopt);
    EXPECT_EQ(parseParameters(splitWords("{}")), EventParameters{});
}

TEST(Values, ThatCannotBeReadAreRefused) {
    for (const auto* const line : {"a", "=1", "a=1 a=2", "{} a=1"})
        EXPECT_THROW(parameters(line), UsageError) << line;
    for (const auto* const amount : {"", "4,99", "4.99USD", "nan"})
        EXPECT_THROW(static_cast<void>(parseAmount(amount)), UsageError) << amount;
    for (const auto* const currency : {"usd", "US", "US$", "USDT"})
        EXPECT_THROW(static_cast<void>(parseCurrency(currency)), UsageError) << currency;
    for (const auto* const duration : {"", "1", "s", "-1s", "1 s", "1d", "1..5s", "25h"})
        EXPECT_THROW(static_cast<void>(parseDuration(duration)), UsageError) << duration;
}

TEST(Values, DurationsTellTheirUnit) {
    EXPECT_EQ(parseDuration("500ms"), milliseconds(500));
    EXPECT_EQ(parseDuration("1.5s"), milliseconds(1500));
    EXPECT_EQ(parseDuration("2m"), milliseconds(120000));
    EXPECT_EQ(parseDuration("24h"), milliseconds(86400000));
}

TEST(NearestName, IsTheOneThatWasMostLikelyMeant) {
    const Names names{"launch", "activate", "relaunch", "track", "status"};
    const std::pair<const char*, const char*> cases[] = {
        {"trak", "track"},  {"lanuch", "launch"},  {"Status", "status"},
        {"stat", "status"}, {"rlaunch", "launch"}, {"x", ""},
        {"", ""},           {"terminal", ""}};
    for (const auto& [text, meant] : cases) EXPECT_EQ(nearestName(text, names), meant) << text;
}

} // namespace corvantile::tool::CommandWordsTest
