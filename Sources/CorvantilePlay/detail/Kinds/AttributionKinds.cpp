#include "Corvantile/Plugin/AdNetwork/AdNetworkPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Kinds/Kinds.hpp"
#include "CorvantilePlay/detail/Text/FileText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <optional>

namespace corvantile::tool {

namespace {

std::optional<AdjustAppSecret> readAppSecret(const PlayConfiguration& configuration) {
    if (!configuration.has("appSecret")) return std::nullopt;
    const auto secret = configuration.object("appSecret");
    secret.allow({"id", "info1", "info2", "info3", "info4"});
    return AdjustAppSecret{.id = secret.unsignedInteger("id"),
                           .info1 = secret.unsignedInteger("info1"),
                           .info2 = secret.unsignedInteger("info2"),
                           .info3 = secret.unsignedInteger("info3"),
                           .info4 = secret.unsignedInteger("info4")};
}

PlayRegistry::MakePlugIn readAdjustPlugin(const PlayConfiguration& configuration) {
    configuration.allow({"appToken", "debug", "appSecret"});
    const auto token = configuration.text("appToken");
    const bool isDebug = configuration.boolean("debug", false);
    const auto secret = readAppSecret(configuration);
    return [=](const PlayRegistry::LaunchSwitches&) {
        return std::make_shared<AdjustPlugin>(token, isDebug, secret);
    };
}

void followAdNetworkPlugin(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter, rx::DisposeBag& bag) {
    const auto adNetwork = std::dynamic_pointer_cast<AdNetworkPluggable>(plugIn);
    Follower("AdNetworkPlugin", reporter, bag)
        .follow("info", adNetwork->info(), [](const AdNetworkInfo& info) { return publicationOf(info); });
}

// Throws where the framework would end the process over the file.
void checkTokens(const std::filesystem::path& file) {
    constexpr const char* expected = R"(event tokens, such as [{"token": "abc123", "name": "store"}])";
    const auto json = readFileText(file, expected);
    try {
        JSONDecoder::decodeArray(json, [](const auto& row) { static_cast<void>(AdjustEvent::decode(row)); });
    } catch (const NSError& error) {
        throw UsageError(file.string() + ": expected " + expected + ", but " + error.localizedDescription());
    }
}

PlayRegistry::MakeSink readAdjustAnalyticComponent(const PlayConfiguration& configuration) {
    configuration.allow({"eventTokenFile", "eventTokens"});
    if (configuration.has("eventTokenFile") == configuration.has("eventTokens"))
        configuration.fail({}, "expected either eventTokenFile, a JSON file of this folder without its "
                               "ending, or eventTokens, a table of tokens by the names of events");
    if (configuration.has("eventTokens"))
        return [table = configuration.textsByName("eventTokens")](const PlayRegistry::SinkSettings& sink,
                                                                  PlayReporter&) {
            return std::make_shared<AdjustAnalyticComponent>(
                AdjustAnalyticComponent::EventTokens(table.begin(), table.end()), sink.ignoredEventNames);
        };
    const auto name = configuration.text("eventTokenFile");
    // As the framework looks for it: a name with a path in it would find nothing, and end the app.
    if (name.find('/') != std::string::npos || name.find("..") != std::string::npos)
        configuration.fail("eventTokenFile", "expected a JSON file of this folder without its ending, but "
                                             "found \"" +
                                                 name + "\"");
    const auto file = configuration.folder() / (name + ".json");
    checkTokens(file);
    return [name, file](const PlayRegistry::SinkSettings& sink, PlayReporter&) {
        checkTokens(file); // the file may have changed since the last launch
        return std::make_shared<AdjustAnalyticComponent>(name, sink.ignoredEventNames);
    };
}

} // namespace

Publication publicationOf(const AdNetworkInfo& info) {
    std::string text;
    for (const auto& [key, value] : info) text.append(text.empty() ? "" : " ").append(key + "=" + value);
    return {info.empty() ? "nothing, no campaign is known" : text, EventValue::Map(info.begin(), info.end())};
}

void addAttributionKinds(PlayRegistry& registry) {
    registry.addPlugIn({.name = "AdjustPlugin",
                        .offers = {PlayRegistry::service<AdjustPluggable>()},
                        .read = readAdjustPlugin});
    registry.addPlugIn({.name = "AdNetworkPlugin",
                        .offers = {PlayRegistry::service<AdNetworkPluggable>()},
                        .read = readPlain<AdNetworkPlugin>,
                        .follow = followAdNetworkPlugin});
    registry.addSink({"AdjustAnalyticComponent", readAdjustAnalyticComponent});
}

} // namespace corvantile::tool
