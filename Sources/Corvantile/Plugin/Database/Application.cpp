#include "Corvantile/Plugin/Database/Application.hpp"

#include "Corvantile/Extension/detail/RecordJSON.hpp"

namespace corvantile {

std::string encodeJSON(const Application& application) {
    return recordjson::write({{"updatedTime", recordjson::dateValue(application.updatedTime)}});
}

std::optional<Application> Application::fromJSON(std::string_view json) {
    return recordjson::read(json, [](const recordjson::Object& object) {
        return Application{recordjson::date(object.at("updatedTime"))};
    });
}

std::string describe(const Application& application) {
    return "Application(updatedTime: " + describe(application.updatedTime) + ")";
}

} // namespace corvantile
