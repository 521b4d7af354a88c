#include "Corvantile/Config/PromoteInstall.hpp"

#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

namespace corvantile::PromoteInstallTest {

constexpr const char* texts =
    R"("appID": "1", "appName": "n", "messageTitle": "t", "messageBody": "b", "noButtonTitle": "no")";

std::string prompt(const std::string& members) {
    return "{" + members + ", " + texts + R"(, "yesButtonTitle": "yes"})";
}

// The error that decoding ends with; empty when it does not.
std::string failure(const std::string& json) {
    return thrownText<NSError>([&] { static_cast<void>(decodeJSON<PromoteInstall>(json)); });
}

TEST(PromoteInstalls, SurviveEncoding) {
    const PromoteInstall promotion(true, -9007199254740993, "1", "caf\u00e9", "\"t\"", "b\n", "no", "yes");
    EXPECT_EQ(decodeJSON<PromoteInstall>(encodeJSON(promotion)), promotion);
    EXPECT_EQ(
        encodeJSON(PromoteInstall()),
        R"({"isEnabled":false,"threshold":1,"appID":"","appName":"","messageTitle":"","messageBody":"",)"
        R"("noButtonTitle":"","yesButtonTitle":""})");
}

TEST(PromoteInstalls, TakeSwitchAndThresholdInManyForms) {
    const struct {
        const char* members;
        bool isEnabled;
        std::int64_t threshold;
    } cases[] = {
        {R"("isEnabled": true, "threshold": 3)", true, 3},
        {R"("isEnabled": 1, "threshold": "-3")", true, -3},
        {R"("isEnabled": "true", "threshold": 3.0)", true, 3},
        {R"("isEnabled": 0, "threshold": null)", false, 0},
        {R"("isEnabled": "false", "threshold": 1e3)", false, 1000},
        {R"("threshold": "9223372036854775807")", false, INT64_MAX},
    };
    for (const auto& [members, isEnabled, threshold] : cases)
        EXPECT_EQ(decodeJSON<PromoteInstall>(prompt(members)),
                  PromoteInstall(isEnabled, threshold, "1", "n", "t", "b", "no", "yes"))
            << members;
}

TEST(PromoteInstalls, NameTheKeyThatCannotBeRead) {
    for (const char* value : {"2", "-1", "0.5", "\"yes\"", "\"1\"", "[]", "{}"})
        EXPECT_THAT(failure(prompt(R"("isEnabled": )" + std::string(value))), HasSubstr("\"isEnabled\""));
    for (const char* value : {"1.5", "true", "\"\"", "\"1.0\"", "\" 1\"", "9223372036854775808", "[]"})
        EXPECT_THAT(failure(prompt(R"("threshold": )" + std::string(value))), HasSubstr("\"threshold\""));
    for (const auto& [last, what] : {std::pair("", "missing"),
                                     {R"(, "yesButtonTitle": null)", "not text"},
                                     {R"(, "yesButtonTitle": 1)", "not text"}})
        EXPECT_THAT(failure(std::string("{") + texts + last + "}"),
                    HasSubstr("\"yesButtonTitle\" is " + std::string(what)));
    for (const char* json : {"", "[]", "nonsense"}) EXPECT_THAT(failure(json), HasSubstr("JSON"));
}

} // namespace corvantile::PromoteInstallTest
