#include "Corvantile/Plugin/Analytic/ConsoleComponent.hpp"

#include "Tests/CorvantileTest/ProcessTest.hpp"

#include <cmath>

namespace corvantile::ConsoleComponentTest {

class Printing : public ProcessTest {
protected:
    std::vector<std::string> printed(const AnalyticEvent& event) {
        platform_->console().clear();
        component_.track(event);
        return lines();
    }
    // The JSON inside the frame.
    static std::string framed(const std::string& json) {
        return debugText("\n<-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+--+->\n[OSTREL LABS] TRACKED EVENT\n\n" +
                         json + "\n<-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+--+->\n");
    }
    static AnalyticEvent withParams(EventParameters params) {
        AnalyticEvent event("e");
        event.params = std::move(params);
        return event;
    }

    ConsoleComponent component_;
};

TEST_F(Printing, FramesAnEventInOneQuotedLine) {
    const AnalyticEvent event("store");
    const auto plain = printed(event);
    EXPECT_THAT(
        plain, ElementsAre(R"("\n<-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+--+->\n[OSTREL LABS] TRACKED EVENT\n\n)"
                           R"({\n  \"eventName\" : \"store\"\n})"
                           R"(\n<-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+-+--+->\n")"));

    component_.trackIAPSubs(NSDecimalNumber(), "USD", "1", std::nullopt, std::nullopt);
    component_.track(event, NSDecimalNumber(5), "USD");
    EXPECT_THAT(lines(), ElementsAre(plain.at(0), plain.at(0))) << "revenue is not shown";
}

TEST_F(Printing, WritesParametersAsPrettyJSON) {
    const auto price = *NSDecimalNumber::fromText("4.990");
    const EventValue::List list{1, true, nullptr, EventValue::List{}, EventValue::Map{{"k", -0.5}}};
    const AnalyticEvent event(
        "e", {{"currency", "USD"}, {"empty", EventValue::Map{}}, {"list", list}, {"value", price}});
    EXPECT_THAT(
        printed(event),
        ElementsAre(framed("{\n  \"eventName\" : \"e\",\n  \"params\" : {\n"
                           "    \"connection_status\" : \"unknow\",\n    \"currency\" : \"USD\",\n"
                           "    \"empty\" : {\n\n    },\n    \"list\" : [\n      1,\n      true,\n"
                           "      null,\n      [\n\n      ],\n      {\n        \"k\" : -0.5\n      }\n"
                           "    ],\n    \"value\" : 4.99\n  }\n}")));
}

TEST_F(Printing, WritesEveryValueThatJSONKnows) {
    const auto decimal = [](const char* text) { return EventValue(*NSDecimalNumber::fromText(text)); };
    const std::pair<EventValue, std::string> cases[] = {
        {"a/b \"c\" \\", R"("a\/b \"c\" \\")"},
        {"\b\f\n\r\t\x01\x1F\x7F", "\"\\b\\f\\n\\r\\t\\u0001\\u001f\x7F\""},
        {std::string("nul\0", 4), R"("nul\u0000")"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {0.1, "0.1"},
        {3.0, "3"},
        {1e100, "1e+100"},
        {decimal("1e20"), "100000000000000000000"},
    };
    for (const auto& [value, json] : cases)
        EXPECT_THAT(printed(withParams({{"k", value}})),
                    ElementsAre(framed("{\n  \"eventName\" : \"e\",\n  \"params\" : {\n    \"k\" : " + json +
                                       "\n  }\n}")));
}

TEST_F(Printing, PrintsNothingOfAnEventThatJSONCannotHold) {
    const EventValue cases[] = {Date{}, OpaqueObject{nullptr, "<view>"}, std::nan(""), -INFINITY, "\xC3"};
    for (const auto& value : cases) {
        EXPECT_THAT(printed(withParams({{"a", 1}, {"k", value}})), IsEmpty()) << value.description();
        EXPECT_THAT(printed(withParams({{"k", EventValue::List{EventValue::Map{{"deep", value}}}}})),
                    IsEmpty());
    }
    EXPECT_THAT(printed(withParams({{"\xFF", 1}})), IsEmpty());
    EXPECT_THAT(printed(AnalyticEvent("\xFF")), IsEmpty());
}

TEST_F(Printing, KeepsEveryNameThatItIsToIgnore) {
    component_.ignore({"b", "a"});
    component_.ignore({"b"});
    EXPECT_THAT(component_.ignoredEventNames(), ElementsAre("b", "a", "b"));
}

} // namespace corvantile::ConsoleComponentTest
