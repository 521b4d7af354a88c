#include "Corvantile/Extension/DatabaseManipulating.hpp"

#include "Corvantile/Plugin/Analytic/AnalyticEvent.hpp"
#include "Corvantile/Plugin/Database/DatabasePluggable.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "Corvantile/Plugin/Database/Setting.hpp"
#include "Corvantile/Plugin/Database/UserPreferenceProtocol.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Foundation/detail/JSONDepth.hpp"
#include "CorvantilePlay/detail/Commands/CommandTable.hpp"
#include "CorvantilePlay/detail/Commands/Latest.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Session/Host.hpp"
#include "CorvantilePlay/detail/Text/NearestName.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"
#include "CorvantilePlay/detail/Text/Values.hpp"

#include <nlohmann/json.hpp>

#include <chrono>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace corvantile::tool {

namespace {

bool booleanOf(const std::string& field, const EventValue& value) {
    if (const auto* const boolean = value.as<bool>()) return *boolean;
    throw UsageError(field + ": expected true or false, but found " + value.description());
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> listOf(const std::string& text) {
    const auto json = parseJSON<nlohmann::json>(text);
    try {
        return json.get<std::vector<std::string>>();
    } catch (const nlohmann::json::exception&) {
        throw UsageError("iapPolicy: expected a JSON list of texts, but found " + text);
    }
}

std::vector<std::string> policyOf(const EventValue& value) {
    const auto* const text = value.as<std::string>();
    if (text == nullptr)
        throw UsageError(
            "iapPolicy: expected a text, in quotes if need be, or a JSON list of texts, but found " +
            value.description());
    return text->starts_with('[') ? listOf(*text) : linesOf(*text);
}

// The record with the given fields in place of its own. An unknown field, a value of another kind, and no
// field at all are a UsageError.
Setting changedSetting(Setting setting, const EventParameters& fields) {
    if (fields.empty()) throw UsageError("expected KEY=VALUE, such as reviewAppEnabled=false");
    for (const auto& [field, value] : fields) {
        if (field == "iapPolicy")
            setting.iapPolicy = policyOf(value);
        else if (field == "manageSubscriptionEnabled")
            setting.manageSubscriptionEnabled = booleanOf(field, value);
        else if (field == "reviewAppEnabled")
            setting.reviewAppEnabled = booleanOf(field, value);
        else
            throw UsageError(unknownName("setting", field,
                                         {"iapPolicy", "manageSubscriptionEnabled", "reviewAppEnabled"}));
    }
    return setting;
}

constexpr const char* loadedMoment = "the records are loaded a second after the launch (wait 1100ms)";

// A record that is stored may be read again and published on other queues first.
void awaitNext(Host& host, const NextElement& next) {
    constexpr std::chrono::seconds timeout{1};
    host.runLoop([&next] { return next.hasArrived(); }, timeout);
    if (!next.hasArrived())
        host.reporter().report(
            "host", "silent", "nothing is published: there is no user, or no stored record that can be read");
}

void runSetting(Host& host, Arguments given) {
    const auto database = host.service<DatabasePluggable>();
    const auto setting = latest(database->setting());
    if (!setting) throw UsageError(std::string("there is no setting to change yet: ") + loadedMoment);
    const auto parameters = parseParameters(given);
    const auto changed = changedSetting(*setting, *parameters);
    host.reporter().report("host", "setting", "updates the setting: " + describeParameters(*parameters),
                           {{"setting", *parameters}});
    const NextElement next(database->setting());
    database->update(changed);
    awaitNext(host, next);
}

void runReset(Host& host) {
    const auto database = host.service<DatabasePluggable>();
    const bool isKnown = latest(database->application()).has_value();
    const NextElement next(database->application());
    host.reporter().report("host", "reset", "stamps the application record with the time of the moment");
    database->resetApplication();
    if (isKnown) return awaitNext(host, next);
    host.reporter().report("host", "silent", std::string("that waits for the first record: ") + loadedMoment);
}

void runReload(Host& host) {
    const auto database = host.service<DatabasePluggable>();
    const NextElement next(database->application());
    host.reporter().report("host", "reload", "reads the stored application record again");
    database->reloadApplication();
    awaitNext(host, next);
}

void runFirstDate(Host& host) {
    const auto date = latest(host.service<FirstDatePluggable>()->firstDate());
    if (date)
        host.reporter().report("host", "firstdate", "the first date is " + describe(*date),
                               {{"date", *date}});
    else
        host.reporter().report("host", "firstdate", "no first date is published yet: activate does it");
}

void reportDeleted(Host& host, const std::string& beginning, const NSUserDefaults::Dictionary& before) {
    const auto defaults = NSUserDefaults::standardUserDefaults();
    Names names;
    for (const auto& [name, value] : before)
        if (!defaults->valueForKey(name)) names.push_back(name);
    host.reporter().report(
        "host", "delete",
        names.empty() ? "no stored name begins with " + beginning : "deletes " + listed(names),
        {{"beginning", beginning}, {"deleted", EventValue::List(names.begin(), names.end())}});
}

void runDelete(Host& host, Arguments given) {
    const auto preference = host.service<UserPreferenceProtocol>();
    const auto beginning = given.empty() ? std::string(DatabaseManipulating::prefix) : given[0].text;
    const auto before = NSUserDefaults::standardUserDefaults()->dictionaryRepresentation();
    const auto isOpen = std::make_shared<bool>(false);
    preference->asyncOpen([isOpen, beginning](DatabaseManipulating& store, const std::string&) {
        *isOpen = true;
        store.deleteAll(beginning);
    });
    host.settle();
    if (!*isOpen)
        throw UsageError(std::string("there is no user whose records could be deleted: ") + loadedMoment);
    reportDeleted(host, beginning, before);
}

} // namespace

std::vector<Command> storageCommands(Host& host) {
    return {
        {"setting",
         "KEY=VALUE…",
         "update the settings record that was published last",
         [&host](Arguments given) { runSetting(host, given); },
         {"manageSubscriptionEnabled and reviewAppEnabled are true or false.",
          "iapPolicy is a text with a line for each term, or a JSON list: iapPolicy='[\"one\", \"two\"]'"}},
        {"reset", "", "stamp the application record with the time of the moment (resetApplication)",
         [&host](Arguments) { runReset(host); }},
        {"reload", "", "read the application record again and publish it (reloadApplication)",
         [&host](Arguments) { runReload(host); }},
        {"firstdate", "", "show the first-install date that was published last",
         [&host](Arguments) { runFirstDate(host); }},
        {"delete",
         "[PREFIX]",
         "delete the stored records whose names begin so, or all of them",
         [&host](Arguments given) { runDelete(host, given); },
         {"Names begin with appconfig_, which belongs to the PREFIX: delete appconfig_Setting"}},
    };
}

} // namespace corvantile::tool
