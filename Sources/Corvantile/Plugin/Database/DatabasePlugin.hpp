#pragma once

#include "Corvantile/Plugin/Database/DatabasePluggable.hpp"
#include "CorvantilePlatform/Export.hpp"
#include "CorvantileReactive/DisposeBag.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace corvantile {

class DatabaseCryptor;
class DatabaseManipulating;
class UserPreferenceProtocol;

// Loads the records once the user preference has loaded its user, storing defaults for those that are missing
// or cannot be read. Needs a UserPreferenceProtocol among the host's plug-ins: launching without one is
// fatal. Held by shared_ptr.
class CORVANTILE_API DatabasePlugin final : public DatabasePluggable,
                                            public std::enable_shared_from_this<DatabasePlugin> {
public:
    DatabasePlugin();
    ~DatabasePlugin() override;

    bool didFinishLaunchingWithOptions(UIApplication& application, const LaunchOptions& options) override;

    [[nodiscard]] rx::Observable<Application> application() override {
        return applicationSubject_.asObservable();
    }
    [[nodiscard]] rx::Observable<Setting> setting() override { return settingSubject_.asObservable(); }
    [[nodiscard]] rx::Observable<bool> isLoaded() override { return isLoadedSubject_.asObservable(); }

    void update(const Setting& setting) override;
    void reloadApplication() override;
    void resetApplication() override;

private:
    using Open =
        std::function<void(DatabasePlugin& self, DatabaseManipulating& store, const std::string& userID)>;

    void loadData();
    template <class Record>
    void load(DatabaseManipulating& store, const std::string& userID);
    template <class Record>
    [[nodiscard]] std::optional<Record> read(DatabaseManipulating& store, const std::string& userID) const;
    template <class Record>
    void
    updateRecord(std::function<std::optional<Record>(DatabasePlugin& self, const Record& stored)> transform);
    void asyncOpen(Open open);

    template <class Record>
    [[nodiscard]] const rx::ReplaySubject<Record>& subject() const;

    // Kept from launch on, alone among the services that plug-ins look up.
    std::shared_ptr<UserPreferenceProtocol> userPreference_;
    std::shared_ptr<DatabaseCryptor> cryptor_;
    const rx::ReplaySubject<Application> applicationSubject_ = rx::ReplaySubject<Application>::create(1);
    const rx::ReplaySubject<Setting> settingSubject_ = rx::ReplaySubject<Setting>::create(1);
    const rx::ReplaySubject<bool> isLoadedSubject_ = rx::ReplaySubject<bool>::create(1);
    rx::DisposeBag disposeBag_;
};

} // namespace corvantile
