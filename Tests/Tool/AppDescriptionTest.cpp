#include "Tools/corvantile/Description/AppDescription.hpp"
#include "Corvantile/DebugPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Tests/Tool/SampleFolder.hpp"
#include "Tools/corvantile/Refusal.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace corvantile::tool {
namespace {

using testing::HasSubstr;

PlugInRegistry registryWithANeedyPlugIn() {
    auto registry = frameworkRegistry();
    registry.plugIns.push_back(
        {"NeedyPlugin", {}, {std::string(AnalyticPluggable::typeName)}, [](const DescriptionObject&) {
             return [](const LaunchSwitches&) { return std::make_shared<DebugPlugin>(false, false); };
         }});
    return registry;
}

// What is said about an app.json of this text; empty when nothing is wrong with it.
std::string complaint(const std::string& text) {
    const SampleFolder folder;
    const auto file = folder.write("app.json", text).string();
    try {
        static_cast<void>(readAppDescription(folder.app(), registryWithANeedyPlugIn()));
        return {};
    } catch (const Refusal& refusal) {
        const std::string message = refusal.what();
        EXPECT_TRUE(message.starts_with(file + ":")) << message;
        return message.substr(file.size() + 1);
    }
}

std::string withMembers(const std::string& members) {
    return R"({"bundleIdentifier": "com.example.app", )" + members + "}";
}

TEST(AppDescription, HoldsWhatTheFileSays) {
    const SampleFolder folder;
    folder.write("app.json", withMembers(R"("name": "App",
        "plugins": [{"kind": "DebugPlugin", "configuration": {"debug": true}}, {"kind": "AnalyticPlugin"}],
        "sinks": [{"kind": "ConsoleComponent", "name": "c", "ignore": ["a", "b"]},
                  {"kind": "RecordingSink", "name": "r", "register": "command"}])"));

    const auto app = readAppDescription(folder.app(), frameworkRegistry());

    EXPECT_EQ(app.bundleIdentifier, "com.example.app");
    EXPECT_EQ(app.name, "App");
    ASSERT_EQ(app.plugIns.size(), 2U);
    EXPECT_EQ(app.plugIns[1].kind, "AnalyticPlugin");
    ASSERT_EQ(app.sinks.size(), 2U);
    EXPECT_EQ(app.sinks[0].ignoredEventNames, (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(app.sinks[0].registersAtLaunch);
    EXPECT_FALSE(app.sinks[1].registersAtLaunch);
}

TEST(AppDescription, SaysWhereItIsWrongAndWhatWasExpected) {
    const std::string router = R"("plugins": [{"kind": "AnalyticPlugin"}], )";
    const struct {
        std::string text;
        const char* complaint;
    } cases[] = {
        {"", "1: syntax error"},
        {"{\n \"name\": \"A\"\n \"plugins\": []}", "3: syntax error"},
        {"{\n \"name\": \"A", "2: syntax error"},
        {"[]", " expected an object, but found a list"},
        {"{}", " bundleIdentifier: is missing: expected a text"},
        {R"({"bundleIdentifier": 5})", " bundleIdentifier: expected a text, but found 5"},
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
        {withMembers(R"("plugins": [{"kind": "DebugPlugin", "configuration": {"dryRun": true}}])"),
         " plugins[0].configuration: there is no key \"dryRun\"; known: debug, enableDryRun"},
        {withMembers(R"("plugins": [{"kind": "DebugPlugin"}, {"kind": "NeedyPlugin"}])"),
         " plugins[1]: NeedyPlugin needs AnalyticPluggable, which no plug-in of this app offers; add "
         "AnalyticPlugin"},
        {withMembers(R"("plugins": [{"kind": "AnalyticPlugin"}, {"kind": "DatabasePlugin"}])"),
         " plugins[1]: DatabasePlugin needs UserPreferenceProtocol, which no plug-in of this app offers; add "
         "UserPreference"},
        {withMembers(R"("sinks": [{"kind": "ConsoleComponent", "name": "c"}])"),
         " sinks[0]: a sink needs AnalyticPluggable"},
        {withMembers(router + R"("sinks": [{"kind": "RecordingSink", "name": ""}])"),
         " sinks[0].name: expected a text, but it is empty"},
        {withMembers(router + R"("sinks": [{"kind": "RecordingSink", "name": "r", "ignore": ["a", 1]}])"),
         " sinks[0].ignore[1]: expected a text, but found 1"},
        {withMembers(router + R"("sinks": [{"kind": "RecordingSink", "name": "r", "register": "later"}])"),
         " sinks[0].register: expected \"launch\" or \"command\", but found \"later\""},
        {withMembers(router + R"("sinks": [{"kind": "RecordingSink", "name": "r"},
                                           {"kind": "ConsoleComponent", "name": "r"}])"),
         " sinks[1].name: there is a sink \"r\" already"},
        {withMembers(R"("plugins": [{"kind": "AdjustPlugin"}])"),
         " plugins[0].configuration.appToken: is missing: expected a text"},
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
        {withMembers(R"("plugins": [{"kind": "NeedyPlugin"}, {"kind": "AnalyticPlugin"}])"), ""},
    };
    for (const auto& [text, expected] : cases) EXPECT_THAT(complaint(text), HasSubstr(expected)) << text;
    EXPECT_EQ(complaint(cases[std::size(cases) - 1].text), "");
}

TEST(AppDescription, ThatIsNotThereIsNamed) {
    const SampleFolder folder;
    try {
        static_cast<void>(readAppDescription(folder.app(), frameworkRegistry()));
        FAIL();
    } catch (const Refusal& refusal) {
        EXPECT_THAT(refusal.what(),
                    HasSubstr("app.json: expected an app description, but it cannot be read"));
    }
}

} // namespace
} // namespace corvantile::tool
