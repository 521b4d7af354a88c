#include "CorvantilePlay/detail/Description/AppDescription.hpp"

#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"
#include "CorvantilePlay/detail/Description/ConfigurationObject.hpp"
#include "CorvantilePlay/detail/Text/FileText.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace corvantile::tool {

namespace {

// The reader would let the last of two members of one name win, silently.
class DuplicateKeys {
public:
    void operator()(nlohmann::json::parse_event_t event, const nlohmann::json& value) {
        if (event == nlohmann::json::parse_event_t::object_start) keys_.emplace_back();
        if (event == nlohmann::json::parse_event_t::object_end) keys_.pop_back();
        if (event == nlohmann::json::parse_event_t::key && !keys_.back().insert(value).second)
            throw UsageError("the key " + value.dump() + " is there twice");
    }

private:
    std::vector<std::set<std::string>> keys_;
};

std::string lineAt(std::string_view text, std::size_t byte) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size()));
    return std::to_string(std::count(text.begin(), end, '\n') + 1);
}

// What comes after the end of the reader's own prefix: its number, and for a syntax error line and column.
std::string reason(std::string_view message, std::string_view prefixEnd) {
    const auto end = message.find(prefixEnd);
    return std::string(end == std::string_view::npos ? message : message.substr(end + prefixEnd.size()));
}

nlohmann::json parse(const std::string& text, const std::string& file) {
    if (isTooDeepJSON(text)) throw UsageError(file + ": it is nested too deeply");
    try {
        return nlohmann::json::parse(text, [keys = DuplicateKeys()](int, nlohmann::json::parse_event_t event,
                                                                    nlohmann::json& value) mutable {
            keys(event, value);
            return true;
        });
    } catch (const nlohmann::json::parse_error& error) {
        const auto last = error.byte == 0 ? 0 : error.byte - 1; // what was read last is what was not expected
        throw UsageError(file + ":" + lineAt(text, last) + ": " + reason(error.what(), ": "));
    } catch (const nlohmann::json::exception& error) { // a number that nothing can hold
        throw UsageError(file + ": " + reason(error.what(), "] "));
    } catch (const UsageError& error) {
        throw UsageError(file + ": " + error.what());
    }
}

template <class Kind>
const Kind& findKind(const std::vector<Kind>& kinds, std::string_view what, const PlayConfiguration& object) {
    const auto name = object.text("kind");
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](const Kind& kind) { return kind.name == name; });
    if (found != kinds.end()) return *found;
    Names names;
    for (const auto& kind : kinds) names.push_back(kind.name);
    object.fail("kind", unknownName(what, name, names));
}

class Reader {
public:
    Reader(const PlayRegistry& registry, const PlayConfiguration& top) : registry_(registry), top_(top) {}

    AppDescription read() {
        top_.allow({"bundleIdentifier", "name", "plugins", "sinks", "attribution", "ads", "httpRoutes",
                    "server", "promoteInstall", "store"});
        readNames();
        app_.registry = registry_;
        for (const auto& object : top_.objects("plugins")) readPlugIn(object);
        for (const auto& object : top_.objects("sinks")) readSink(object);
        checkNeeds();
        readServices(top_, app_);
        return std::move(app_);
    }

private:
    void readNames() {
        app_.bundleIdentifier = top_.text("bundleIdentifier");
        static constexpr std::string_view allowed =
            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-.";
        const auto& identifier = app_.bundleIdentifier;
        if (identifier.find_first_not_of(allowed) != std::string::npos || identifier.front() == '.')
            top_.fail("bundleIdentifier",
                      "expected letters, digits, hyphens and points, such as com.example.app, but found \"" +
                          identifier + "\"");
        app_.name = top_.text("name", app_.bundleIdentifier);
    }

    void readPlugIn(const PlayConfiguration& object) {
        object.allow({"kind", "configuration"});
        const auto& kind = findKind(registry_.plugIns(), "plug-in", object);
        const auto configuration = object.object("configuration");
        app_.plugIns.push_back({kind, configuration, kind.read(configuration)});
        for (const auto& offered : kind.offers) offered_.insert(offered.name);
        for (const auto& needed : kind.needs) needs_.push_back({object, kind.name, std::string(needed)});
    }

    void readSink(const PlayConfiguration& object) {
        object.allow({"kind", "name", "ignore", "register", "configuration"});
        const auto& kind = findKind(registry_.sinks(), "sink", object);
        SinkDescription sink{.settings = {object.text("name"), object.texts("ignore")},
                             .kind = kind.name,
                             .registersAtLaunch = readsLaunch(object),
                             .make = kind.read(object.object("configuration"))};
        if (!sinkNames_.insert(sink.settings.name).second)
            object.fail("name", "there is a sink \"" + sink.settings.name + "\" already");
        needs_.push_back({object, "a sink", std::string(AnalyticPluggable::typeName)});
        app_.sinks.push_back(std::move(sink));
    }

    static bool readsLaunch(const PlayConfiguration& object) {
        const auto moment = object.text("register", "launch");
        if (moment != "launch" && moment != "command")
            object.fail("register", "expected \"launch\" or \"command\", but found \"" + moment + "\"");
        return moment == "launch";
    }

    void checkNeeds() const {
        for (const auto& [object, who, service] : needs_)
            if (!offered_.count(service))
                object.fail({}, who + " needs " + service + ", which no plug-in of this app offers; add " +
                                    listed(kindsOffering(registry_, service)));
    }

    struct Need {
        PlayConfiguration object;
        std::string who;
        std::string service;
    };

    const PlayRegistry& registry_;
    const PlayConfiguration& top_;
    AppDescription app_;
    std::set<std::string> offered_;
    std::set<std::string> sinkNames_;
    std::vector<Need> needs_;
};

} // namespace

const PlugInDescription* AppDescription::plugIn(std::string_view kind) const {
    const auto found = std::find_if(plugIns.begin(), plugIns.end(), [&](const PlugInDescription& plugIn) {
        return plugIn.kind.name == kind;
    });
    return found == plugIns.end() ? nullptr : &*found;
}

std::vector<std::string> AppDescription::consumableWarnings() const {
    const auto* const consumables = plugIn("ConsumablePlugin");
    const auto* const records = plugIn("IAPReceiptPlugin");
    if (consumables == nullptr || records == nullptr) return {};
    const bool areRecordsFirst = records < consumables; // both lie in the list
    std::vector<std::string> warnings;
    const auto finished = consumables->configuration.texts("consumableProductIDs");
    for (const auto& product : records->configuration.objects("products")) {
        const auto identifier = product.text("identifier");
        if (std::find(finished.begin(), finished.end(), identifier) == finished.end()) continue;
        warnings.push_back(
            identifier + " is in the lists of IAPReceiptPlugin and of ConsumablePlugin, which finishes it: " +
            (areRecordsFirst ? "here its purchases are reported, since IAPReceiptPlugin comes first"
                             : "here no purchase of it is reported, since ConsumablePlugin comes first") +
            "; the phone promises no order");
    }
    return warnings;
}

std::vector<std::string> kindsOffering(const PlayRegistry& registry, std::string_view service) {
    std::vector<std::string> names;
    for (const auto& kind : registry.plugIns())
        if (std::any_of(kind.offers.begin(), kind.offers.end(),
                        [&](const PlayRegistry::Service& offered) { return offered.name == service; }))
            names.push_back(kind.name);
    return names;
}

AppDescription parseAppDescription(const std::string& text, const std::filesystem::path& file,
                                   const PlayRegistry& registry) {
    const auto document = std::make_shared<const nlohmann::json>(parse(text, file.string()));
    const PlayConfiguration top(
        std::make_shared<PlayConfiguration::Object>(PlayConfiguration::Object{document, file.string(), {}}));
    auto app = Reader(registry, top).read();
    app.folder = file.parent_path();
    return app;
}

AppDescription readAppDescription(const std::filesystem::path& folder, const PlayRegistry& registry) {
    const auto file = folder / "app.json";
    return parseAppDescription(readFileText(file, "an app description"), file, registry);
}

std::filesystem::path sampleAppFolder() {
    std::error_code ignored;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", ignored);
    for (auto folder = executable.parent_path();; folder = folder.parent_path()) {
        for (const char* const place : {"SampleApp", "share/corvantile/SampleApp"})
            if (std::filesystem::exists(folder / place / "app.json", ignored)) return folder / place;
        if (folder == folder.parent_path()) break;
    }
    throw UsageError("the sample app is not beside the tool; name an app: --app FOLDER");
}

AppDescription readApp(const std::filesystem::path& folder, const PlayRegistry& registry) {
    return readAppDescription(folder.empty() ? sampleAppFolder() : folder, registry);
}

} // namespace corvantile::tool
