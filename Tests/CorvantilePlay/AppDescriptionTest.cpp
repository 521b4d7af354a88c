#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Tests/CorvantilePlay/SampleFolder.hpp"

namespace corvantile::tool::AppDescriptionTest {

// What is said about an app.json of this text; empty when nothing is wrong with it.
std::string complaint(const std::string& text) {
    const SampleFolder folder;
    const auto file = folder.write("app.json", text).string();
    const auto message = thrownText<UsageError>(
        [&] { static_cast<void>(readAppDescription(folder.app(), PlayRegistry::framework())); });
    EXPECT_TRUE(message.empty() || message.starts_with(file + ":")) << message;
    return message.empty() ? "" : message.substr(file.size() + 1);
}

std::string withMembers(const std::string& members) {
    return R"({"bundleIdentifier": "com.example.app", )" + members + "}";
}

TEST(AppDescription, SaysWhereItIsWrongAndWhatWasExpected) {
    const std::string router = R"("plugins": [{"kind": "AnalyticPlugin"}], )";
    const std::pair<std::string, const char*> cases[] = {
        {"", "1: syntax error"},
        {"{\n \"name\": \"A\"\n \"plugins\": []}", "3: syntax error"},
        {R"({"bundleIdentifier": 1e999})", " number overflow parsing '1e999'"},
        {"{}", " bundleIdentifier: is missing: expected a text"},
        {R"({"bundleIdentifier": "a/b"})", " bundleIdentifier: expected letters, digits"},
        {R"({"bundleIdentifier": ".."})", " bundleIdentifier: expected letters, digits"},
        {withMembers(R"("name": "A", "name": "B")"), " the key \"name\" is there twice"},
        {withMembers(R"("plugin": [])"),
         " there is no key \"plugin\"; known: bundleIdentifier, name, plugins"},
        {withMembers(R"("plugins": {})"), " plugins: expected a list, but found an object"},
        {withMembers(R"("plugins": [{"kind": "AnalyticPlugin"}, 7])"),
         " plugins[1]: expected an object, but found 7"},
        {withMembers(R"("plugins": [{"kind": "AnalyticsPlugin"}])"),
         " plugins[0].kind: there is no plug-in \"AnalyticsPlugin\"; known: DebugPlugin, AnalyticPlugin, "},
        {withMembers(R"("plugins": [{"kind": "DebugPlugin", "configuration": {"debug": "yes"}}])"),
         " plugins[0].configuration.debug: expected true or false, but found \"yes\""},
        {withMembers(R"("plugins": [{"kind": "AnalyticPlugin"}, {"kind": "DatabasePlugin"}])"),
         " plugins[1]: DatabasePlugin needs UserPreferenceProtocol, which no plug-in of this app offers; add "
         "UserPreference"},
        {withMembers(R"("sinks": [{"kind": "ConsoleComponent", "name": "c"}])"),
         " sinks[0]: a sink needs AnalyticPluggable"},
        {withMembers(router + R"("sinks": [{"kind": "RecordingSink", "name": ""}])"),
         " sinks[0].name: expected a text, but it is empty"},
        {withMembers(router + R"("sinks": [{"kind": "RecordingSink", "name": "r", "register": "later"}])"),
         " sinks[0].register: expected \"launch\" or \"command\", but found \"later\""},
        {withMembers(router + R"("sinks": [{"kind": "RecordingSink", "name": "r"},
                                           {"kind": "ConsoleComponent", "name": "r"}])"),
         " sinks[1].name: there is a sink \"r\" already"},
        {withMembers(
             R"("plugins": [{"kind": "AdjustPlugin", "configuration": {"appToken": "a", "appSecret": {"id": -1}}}])"),
         " plugins[0].configuration.appSecret.id: expected a whole number, but found -1"},
        {withMembers(router + R"("sinks": [{"kind": "AdjustAnalyticComponent", "name": "a"}])"),
         " sinks[0].configuration: expected either eventTokenFile, a JSON file"},
        {withMembers(R"("attribution": {"endpoint": "host.example"})"),
         " attribution.endpoint: expected an address such as https://host, but found \"host.example\""},
        {withMembers(R"("ads": {"identifier": "12"})"), " ads.identifier: expected a UUID, but found \"12\""},
        {withMembers(R"("httpRoutes": {"https://a.example/path": "http://127.0.0.1:1"})"),
         " httpRoutes: no route can lead from \"https://a.example/path\""},
    };
    for (const auto& [text, expected] : cases) EXPECT_THAT(complaint(text), HasSubstr(expected)) << text;
    // What a plug-in needs may come after it.
    EXPECT_EQ(
        complaint(withMembers(R"("plugins": [{"kind": "DatabasePlugin"}, {"kind": "UserPreference"}])")), "");
}

} // namespace corvantile::tool::AppDescriptionTest
