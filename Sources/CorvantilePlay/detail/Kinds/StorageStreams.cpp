#include "CorvantilePlay/detail/Kinds/StorageStreams.hpp"

#include "Corvantile/Plugin/Database/DatabasePluggable.hpp"
#include "Corvantile/Plugin/Database/FirstDatePluggable.hpp"
#include "Corvantile/Plugin/Database/UserPreferenceProtocol.hpp"

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

} // namespace

void followUserPreference(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto preference = std::dynamic_pointer_cast<UserPreferenceProtocol>(plugIn);
    Follower("UserPreference", reporter, bag).follow("isLoaded", preference->isLoaded(), describeElement);
}

void followDatabasePlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto database = std::dynamic_pointer_cast<DatabasePluggable>(plugIn);
    Follower follower("DatabasePlugin", reporter, bag);
    follower.follow("application", database->application(), describeElement);
    follower.follow("setting", database->setting(), describeElement);
    follower.follow("isLoaded", database->isLoaded(), describeElement);
}

void followFirstDatePlugin(const PlugInPointer& plugIn, Reporter& reporter, rx::DisposeBag& bag) {
    const auto firstDate = std::dynamic_pointer_cast<FirstDatePluggable>(plugIn);
    Follower("FirstDatePlugin", reporter, bag).follow("firstDate", firstDate->firstDate(), describeElement);
}

} // namespace corvantile::tool
