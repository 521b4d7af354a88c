#include "Corvantile/Plugin/Database/ApplicationState.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"

namespace corvantile {

ApplicationState::ApplicationState() : ApplicationState(Application()) {}

ApplicationState::ApplicationState(const Application& application) {
    setPrimaryID(0);
    setApplication(application);
}

ApplicationState::~ApplicationState() = default;

void ApplicationState::setPrimaryID(std::int64_t primaryID) {
    primaryID_ = primaryID;
    primaryIDSubject_.onNext(primaryID);
}

void ApplicationState::setUpdatedTime(Date updatedTime) {
    updatedTime_ = updatedTime;
    updatedTimeSubject_.onNext(updatedTime);
}

std::shared_ptr<ApplicationState> ApplicationState::fromJSON(std::string_view json) {
    const auto state = recordjson::read(json, [](const recordjson::Object& object) {
        auto made = std::make_shared<ApplicationState>();
        made->setPrimaryID(recordjson::integer(object.at("primaryID")));
        made->setUpdatedTime(recordjson::date(object.at("updatedTime")));
        return made;
    });
    return state.value_or(nullptr);
}

std::string encodeJSON(const ApplicationState& state) {
    return recordjson::write(
        {{"primaryID", state.primaryID()}, {"updatedTime", recordjson::dateValue(state.updatedTime())}});
}

} // namespace corvantile
