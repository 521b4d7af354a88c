#include "Corvantile/Plugin/Database/DatabasePlugin.hpp"

#include "Corvantile/Corvantile.hpp"
#include "Corvantile/Extension/DatabaseManipulating.hpp"
#include "Corvantile/Plugin/Database/UserPreferenceProtocol.hpp"
#include "Corvantile/RequireService.hpp"
#include "Corvantile/detail/DebuggedStream.hpp"
#include "CorvantilePlatform/Foundation/Clock.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantileReactive/SerialDispatchQueueScheduler.hpp"

#include <type_traits>
#include <utility>

namespace corvantile {

namespace {

template <class Record>
std::string recordKey(const std::string& userID) {
    return std::string(userDefaultKeyEncodable<Record>()).append("_").append(userID);
}

} // namespace

DatabasePluggable::~DatabasePluggable() = default;
DatabasePlugin::DatabasePlugin() = default;
DatabasePlugin::~DatabasePlugin() = default;

template <class Record>
const rx::ReplaySubject<Record>& DatabasePlugin::subject() const {
    if constexpr (std::is_same_v<Record, Application>)
        return applicationSubject_;
    else
        return settingSubject_;
}

bool DatabasePlugin::didFinishLaunchingWithOptions(UIApplication&, const LaunchOptions&) {
    userPreference_ = requireService<UserPreferenceProtocol>();
    cryptor_ = std::dynamic_pointer_cast<DatabaseCryptor>(userPreference_);
    const auto scheduler = rx::backgroundScheduler();
    const auto loaded = userPreference_->isLoaded().take(1).subscribeOn(scheduler).observeOn(scheduler);
    disposeBag_.insert(debugged(loaded, rx::debugLabel("DatabasePlugin", __LINE__,
                                                       "application(_:didFinishLaunchingWithOptions:)"))
                           .subscribe([weak = weak_from_this()](bool) {
                               if (const auto self = weak.lock()) self->loadData();
                           }));
    return true;
}

void DatabasePlugin::asyncOpen(Open open) {
    if (!userPreference_) return;
    userPreference_->asyncOpen([weak = weak_from_this(), open = std::move(open)](DatabaseManipulating& store,
                                                                                 const std::string& userID) {
        if (const auto self = weak.lock()) open(*self, store, userID);
    });
}

void DatabasePlugin::loadData() {
    asyncOpen([](DatabasePlugin& self, DatabaseManipulating& store, const std::string& userID) {
        if (!self.cryptor_) return;
        self.load<Application>(store, userID);
        self.load<Setting>(store, userID);
        self.isLoadedSubject_.onNext(true);
    });
}

template <class Record>
std::optional<Record> DatabasePlugin::read(DatabaseManipulating& store, const std::string& userID) const {
    return store.getObject<Record>(recordKey<Record>(userID), cryptor_.get(), &Record::fromJSON);
}

// A default is emitted once it is stored; that it could not be encrypted is no failure to store.
template <class Record>
void DatabasePlugin::load(DatabaseManipulating& store, const std::string& userID) {
    if (const auto stored = read<Record>(store, userID)) return subject<Record>().onNext(*stored);
    const Record record;
    try {
        store.setObject(record, recordKey<Record>(userID), cryptor_.get());
    } catch (...) { // a host's own store may throw anything
        return;     // no record rather than one that the next launch will not find
    }
    subject<Record>().onNext(record);
}

// Emitted before it is stored: `transform` emits what it returns.
template <class Record>
void DatabasePlugin::updateRecord(
    std::function<std::optional<Record>(DatabasePlugin& self, const Record& stored)> transform) {
    asyncOpen([transform = std::move(transform)](DatabasePlugin& self, DatabaseManipulating& store,
                                                 const std::string& userID) {
        const auto stored = self.read<Record>(store, userID);
        if (!stored) return;
        const auto next = transform(self, *stored);
        if (!next) return;
        try {
            store.setObject(*next, recordKey<Record>(userID), self.cryptor_.get());
        } catch (...) {
            // The stream has the record; the store keeps the former one.
        }
    });
}

void DatabasePlugin::update(const Setting& setting) {
    updateRecord<Setting>([setting](DatabasePlugin& self, const Setting&) {
        self.settingSubject_.onNext(setting);
        return std::optional(setting);
    });
}

void DatabasePlugin::reloadApplication() {
    asyncOpen([](DatabasePlugin& self, DatabaseManipulating& store, const std::string& userID) {
        if (const auto stored = self.read<Application>(store, userID))
            self.applicationSubject_.onNext(*stored);
    });
}

void DatabasePlugin::resetApplication() {
    const auto records =
        applicationSubject_.observeOn(rx::backgroundScheduler()).subscribeOn(rx::backgroundScheduler());
    // The first element only: the record emitted below would start the reset again, endlessly.
    const auto first =
        debugged(records, rx::debugLabel("DatabasePlugin", __LINE__, "resetApplication()")).take(1);
    disposeBag_.insert(first.subscribe([weak = weak_from_this()](const Application&) {
        const auto self = weak.lock();
        if (!self) return;
        self->updateRecord<Application>([](DatabasePlugin& plugin, const Application& stored) {
            auto next = stored;
            next.updatedTime = Platform::current().ports().clock->now();
            plugin.applicationSubject_.onNext(next);
            return std::optional(next);
        });
    }));
}

} // namespace corvantile
