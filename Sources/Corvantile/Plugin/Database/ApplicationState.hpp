#pragma once

#include "Corvantile/Plugin/Database/Application.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Foundation/Date.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Observable.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace corvantile {

// A mirror of the application record for hosts that bind to properties rather than to records. The framework
// never writes one. Threads: one at a time.
class CORVANTILE_API ApplicationState final : NonCopyable {
public:
    static constexpr std::string_view typeName = "ApplicationState";

    ApplicationState();
    explicit ApplicationState(const Application& application);
    ~ApplicationState();

    [[nodiscard]] std::int64_t primaryID() const { return primaryID_; }
    void setPrimaryID(std::int64_t primaryID);
    [[nodiscard]] Date updatedTime() const { return updatedTime_; }
    void setUpdatedTime(Date updatedTime);

    // The value of the moment, then each one set.
    [[nodiscard]] rx::Observable<std::int64_t> observePrimaryID() const {
        return primaryIDSubject_.asObservable();
    }
    [[nodiscard]] rx::Observable<Date> observeUpdatedTime() const {
        return updatedTimeSubject_.asObservable();
    }

    // As a record, and from one: `primaryID` stays.
    [[nodiscard]] Application application() const { return {updatedTime_}; }
    void setApplication(const Application& application) { setUpdatedTime(application.updatedTime); }

    // Null when the text does not hold both properties.
    [[nodiscard]] static std::shared_ptr<ApplicationState> fromJSON(std::string_view json);

private:
    std::int64_t primaryID_ = 0;
    Date updatedTime_;
    const rx::ReplaySubject<std::int64_t> primaryIDSubject_ = rx::ReplaySubject<std::int64_t>::create(1);
    const rx::ReplaySubject<Date> updatedTimeSubject_ = rx::ReplaySubject<Date>::create(1);
};

[[nodiscard]] CORVANTILE_API std::string encodeJSON(const ApplicationState& state);

} // namespace corvantile
