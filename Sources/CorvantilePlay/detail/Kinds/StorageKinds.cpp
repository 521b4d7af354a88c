#include "Corvantile/Extension/UserDefaultsDatabase.hpp"
#include "Corvantile/Plugin/Analytic/AnalyticPluggable.hpp"
#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"
#include "Corvantile/Plugin/Database/FirstDatePlugin.hpp"
#include "Corvantile/Plugin/Database/UserPreference.hpp"
#include "CorvantilePlay/detail/Kinds/Kinds.hpp"

namespace corvantile::tool {

namespace {

Publication published(bool value) { return {value ? "true" : "false", value}; }
Publication published(Date date) { return {describe(date), date}; }
Publication published(const Application& record) {
    return {describe(record), EventValue::Map{{"updatedTime", record.updatedTime}}};
}
Publication published(const Setting& record) {
    return {describe(record),
            EventValue::Map{{"iapPolicy", EventValue::List(record.iapPolicy.begin(), record.iapPolicy.end())},
                            {"manageSubscriptionEnabled", record.manageSubscriptionEnabled},
                            {"reviewAppEnabled", record.reviewAppEnabled}}};
}

constexpr auto describeElement = [](const auto& element) { return published(element); };

PlayRegistry::MakePlugIn readUserPreference(const PlayConfiguration& configuration) {
    configuration.allow({});
    return [](const PlayRegistry::LaunchSwitches&) {
        return std::make_shared<UserPreference>(std::make_shared<UserDefaultsDatabase>());
    };
}

void followUserPreference(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter, rx::DisposeBag& bag) {
    const auto preference = std::dynamic_pointer_cast<UserPreferenceProtocol>(plugIn);
    Follower("UserPreference", reporter, bag).follow("isLoaded", preference->isLoaded(), describeElement);
}

void followDatabasePlugin(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter, rx::DisposeBag& bag) {
    const auto database = std::dynamic_pointer_cast<DatabasePluggable>(plugIn);
    Follower follower("DatabasePlugin", reporter, bag);
    follower.follow("application", database->application(), describeElement);
    follower.follow("setting", database->setting(), describeElement);
    follower.follow("isLoaded", database->isLoaded(), describeElement);
}

void followFirstDatePlugin(const PlayRegistry::PlugIn& plugIn, PlayReporter& reporter, rx::DisposeBag& bag) {
    const auto firstDate = std::dynamic_pointer_cast<FirstDatePluggable>(plugIn);
    Follower("FirstDatePlugin", reporter, bag).follow("firstDate", firstDate->firstDate(), describeElement);
}

template <class Record>
PlayRegistry::RecordKind recordKind() {
    return {std::string(Record::typeName),
            [](std::string_view json) { return Record::fromJSON(json).has_value(); }};
}

} // namespace

void addStorageKinds(PlayRegistry& registry) {
    registry.addPlugIn({.name = "UserPreference",
                        .offers = {PlayRegistry::service<UserPreferenceProtocol>()},
                        .read = readUserPreference,
                        .follow = followUserPreference});
    registry.addPlugIn({.name = "DatabasePlugin",
                        .offers = {PlayRegistry::service<DatabasePluggable>()},
                        .needs = {UserPreferenceProtocol::typeName},
                        .read = readPlain<DatabasePlugin>,
                        .follow = followDatabasePlugin});
    registry.addPlugIn({.name = "FirstDatePlugin",
                        .offers = {PlayRegistry::service<FirstDatePluggable>()},
                        .needs = {AnalyticPluggable::typeName},
                        .read = readPlain<FirstDatePlugin>,
                        .follow = followFirstDatePlugin});
    registry.addRecord(recordKind<Application>());
    registry.addRecord(recordKind<Setting>());
}

} // namespace corvantile::tool
