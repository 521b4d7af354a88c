#include "CorvantilePlay/PlayRegistry.hpp"

#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "CorvantilePlay/detail/Inspection/StateCopy.hpp"
#include "CorvantilePlay/detail/Inspection/StoredValues.hpp"
#include "CorvantilePlay/detail/Kinds/RecordingSink.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "Tests/CorvantilePlay/EngineFixture.hpp"
#include "Tests/CorvantilePlay/GoldenState.hpp"

namespace corvantile::tool::PlayRegistryTest {

using testing::IsSupersetOf;

class GreeterPluggable : public virtual PluggableApplicationDelegateService {
public:
    static constexpr std::string_view typeName = "GreeterPluggable";
    [[nodiscard]] virtual std::string greeting() const = 0;
};

class Greeter final : public GreeterPluggable {
public:
    explicit Greeter(std::string greeting) : greeting_(std::move(greeting)) {}
    [[nodiscard]] std::string greeting() const override { return greeting_; }

private:
    const std::string greeting_;
};

PlayRegistry::MakePlugIn readGreeter(const PlayConfiguration& configuration) {
    configuration.allow({"greeting", "isLoud"});
    return [configuration](const PlayRegistry::LaunchSwitches& switches) { // outlives the document's reader
        return std::make_shared<Greeter>(configuration.text("greeting") + (switches.debug ? "!" : ""));
    };
}

PlayRegistry::PlugInKind greeterKind() {
    return {.name = "Greeter",
            .offers = {PlayRegistry::service<GreeterPluggable>()},
            .needs = {AnalyticPluggable::typeName},
            .read = readGreeter,
            .follow = [](const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter, rx::DisposeBag&) {
                reporter.report("greeter", "made", std::dynamic_pointer_cast<Greeter>(plugIn)->greeting());
            }};
}

// Another name for the framework's recording sink.
PlayRegistry::SinkKind mailboxKind() {
    return {"Mailbox", [](const PlayConfiguration& configuration) {
                configuration.allow({"owner"});
                return [owner = configuration.text("owner")](const PlayRegistry::SinkSettings& settings,
                                                             PlayReporter& reporter) {
                    auto sink = std::make_shared<RecordingSink>(owner + "'s " + settings.name, reporter);
                    for (const auto& name : settings.ignoredEventNames) sink->ignore({name});
                    return sink;
                };
            }};
}

std::string appWith(const std::string& plugIn, const std::string& sink) {
    return R"({"bundleIdentifier": "com.example.own", "plugins": [{"kind": "AnalyticPlugin"}, {"kind": "DebugPlugin"})" +
           plugIn + R"(], "sinks": [)" + sink + "]}";
}

class PlayRegistryTest : public EngineFixture {
protected:
    PlayRegistryTest() {
        registry().addPlugIn(greeterKind());
        registry().addSink(mailboxKind());
    }

    std::string errorIn(const std::string& app) {
        folder().write("app.json", app);
        return thrownText<UsageError>(
            [&] { static_cast<void>(readAppDescription(folder().app(), registry())); });
    }
};

TEST_F(PlayRegistryTest, MakesAHostsKindsFromTheirConfigurationAtEachLaunch) {
    begin(
        appWith(
            R"(, {"kind": "Greeter", "configuration": {"greeting": "hello"}})",
            R"({"kind": "Mailbox", "name": "mail", "ignore": ["quiet"], "configuration": {"owner": "Ada"}})")
            .c_str());

    play({"launch", "lookup GreeterPluggable", "track open", "track quiet", "relaunch debug"});

    std::vector<std::string> texts;
    for (const auto& event : events()) texts.push_back(event.text);
    EXPECT_THAT(takeTexts("greeter"), ElementsAre("hello", "hello!"));
    EXPECT_THAT(texts,
                IsSupersetOf({"GreeterPluggable → Greeter, number 3 of 3", "registers sink mail (Mailbox)",
                              "Ada's mail got open", "mail ignores quiet: it is on its list"}));
}

TEST_F(PlayRegistryTest, ReportsErrorsInTheDescriptionAsForTheFrameworksKinds) {
    const struct {
        std::string plugIn, sink;
        const char* error;
    } cases[] = {
        {R"(, {"kind": "Greeter", "configuration": {"greting": "x"}})", "",
         "plugins[2].configuration: there is no key \"greting\"; known: greeting, isLoud"},
        {"", R"({"kind": "Mailbox", "name": "m", "configuration": {"owner": 7}})",
         "sinks[0].configuration.owner: expected a text, but found 7"},
        {R"(, {"kind": "Greter"})", "", "did you mean Greeter?"},
    };
    for (const auto& [plugIn, sink, error] : cases)
        EXPECT_THAT(errorIn(appWith(plugIn, sink)), HasSubstr(error));
    EXPECT_THAT(
        errorIn(
            R"({"bundleIdentifier": "a", "plugins": [{"kind": "Greeter", "configuration": {"greeting": "x"}}]})"),
        HasSubstr("plugins[0]: Greeter needs AnalyticPluggable, which no plug-in of this app offers; add "
                  "AnalyticPlugin"));
}

TEST_F(PlayRegistryTest, ChecksStoredRecordsOfAHost) {
    const auto state = folder().state();
    copyGoldenState(state);
    const auto errorsWith = [&](bool isValid) {
        PlayRegistry registry;
        registry.addRecord(
            {"Setting", [=](std::string_view json) { return isValid && json.starts_with("{"); }});
        std::vector<std::string> errors;
        for (const auto& value : readStoredValues(StateCopy(state), registry.records()).values)
            if (!value.fault.empty()) errors.push_back(value.fault);
        return errors;
    };

    EXPECT_THAT(errorsWith(true), ElementsAre());
    EXPECT_THAT(errorsWith(false), Contains("it decrypts, but is not the record that its name says"));
}

TEST(PlayRegistryDeathTest, RefusesASecondKindOfTheSameName) {
    auto registry = PlayRegistry::framework();
    registry.addPlugIn({.name = "RecordingSink", .read = readGreeter}); // of another sort

    EXPECT_DEATH(registry.addPlugIn({.name = "AdjustPlugin", .read = readGreeter}),
                 "The registry already has a plug-in of the kind AdjustPlugin");
    EXPECT_DEATH(registry.addSink({"ConsoleComponent", {}}),
                 "already has a sink of the kind ConsoleComponent");
    EXPECT_DEATH(registry.addRecord({"Setting", {}}), "already has a record of the kind Setting");
}

} // namespace corvantile::tool::PlayRegistryTest
