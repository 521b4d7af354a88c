#include "CorvantilePlay/detail/Kinds/AttributionKinds.hpp"

#include "Corvantile/Plugin/AdNetwork/AdNetworkPlugin.hpp"
#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "Corvantile/Plugin/Analytic/AdjustPlugin.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/detail/Description/AppDescription.hpp"
#include "CorvantilePlay/detail/Kinds/AttributionStreams.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <fstream>
#include <iterator>
#include <optional>

namespace corvantile::tool {

namespace {

std::optional<AdjustAppSecret> readAppSecret(const DescriptionObject& configuration) {
    if (!configuration.has("appSecret")) return std::nullopt;
    const auto secret = configuration.object("appSecret");
    secret.allow({"id", "info1", "info2", "info3", "info4"});
    return AdjustAppSecret{.id = secret.unsignedInteger("id"),
                           .info1 = secret.unsignedInteger("info1"),
                           .info2 = secret.unsignedInteger("info2"),
                           .info3 = secret.unsignedInteger("info3"),
                           .info4 = secret.unsignedInteger("info4")};
}

MakePlugIn readAdjustPlugin(const DescriptionObject& configuration) {
    configuration.allow({"appToken", "debug", "appSecret"});
    const auto token = configuration.text("appToken");
    const bool isDebug = configuration.boolean("debug", false);
    const auto secret = readAppSecret(configuration);
    return [=](const LaunchSwitches&) { return std::make_shared<AdjustPlugin>(token, isDebug, secret); };
}

MakePlugIn readAdNetworkPlugin(const DescriptionObject& configuration) {
    configuration.allow({});
    return [](const LaunchSwitches&) { return std::make_shared<AdNetworkPlugin>(); };
}

// Why the framework would end the process over the file; empty when it would not.
std::string faultOfTokens(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string json(std::istreambuf_iterator<char>(stream), {});
    if (!stream.is_open() || stream.bad()) return "it cannot be read";
    try {
        JSONDecoder::decodeArray(json, [](const auto& row) { static_cast<void>(AdjustEvent::decode(row)); });
        return {};
    } catch (const NSError& error) {
        return error.localizedDescription();
    }
}

void checkTokens(const std::filesystem::path& file) {
    const auto fault = faultOfTokens(file);
    if (!fault.empty())
        throw UsageError(file.string() +
                         R"(: expected event tokens, such as [{"token": "abc123", "name": "store"}], but )" +
                         fault);
}

MakeSink readAdjustAnalyticComponent(const DescriptionObject& configuration) {
    configuration.allow({"eventTokenFile", "eventTokens"});
    if (configuration.has("eventTokenFile") == configuration.has("eventTokens"))
        configuration.fail({}, "expected either eventTokenFile, a JSON file of this folder without its "
                               "ending, or eventTokens, a table of tokens by the names of events");
    if (configuration.has("eventTokens"))
        return [table = configuration.textsByName("eventTokens")](const SinkDescription& sink, Reporter&) {
            return std::make_shared<AdjustAnalyticComponent>(
                AdjustAnalyticComponent::EventTokens(table.begin(), table.end()), sink.ignoredEventNames);
        };
    const auto name = configuration.text("eventTokenFile");
    const auto file = configuration.folder() / (name + ".json");
    checkTokens(file);
    return [name, file](const SinkDescription& sink, Reporter&) {
        checkTokens(file); // somebody may have changed it since the last launch
        return std::make_shared<AdjustAnalyticComponent>(name, sink.ignoredEventNames);
    };
}

} // namespace

PlugInKind adjustPlugin() { return {"AdjustPlugin", {service<AdjustPluggable>()}, {}, readAdjustPlugin}; }

PlugInKind adNetworkPlugin() {
    return {
        "AdNetworkPlugin", {service<AdNetworkPluggable>()}, {}, readAdNetworkPlugin, followAdNetworkPlugin};
}

SinkKind adjustAnalyticComponent() { return {"AdjustAnalyticComponent", readAdjustAnalyticComponent}; }

} // namespace corvantile::tool
